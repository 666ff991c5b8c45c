#include "convert/target_file.h"

#include "common/platform/paths.h"
#include "convert/error.h"

namespace zrml::convert {

void TargetFile::Fail(int error) const {
  throw Error(ErrorKind::kTargetUnwritable,
              "cannot write " + path_ + " (" + platform::ErrorText(error) + ")");
}

void TargetFile::FailAsExisting() const { throw Error(ErrorKind::kTargetExists, path_ + " exists"); }

}  // namespace zrml::convert
