#include "convert/target_file.h"

#include "convert/error.h"

namespace zrml::convert {

void TargetFile::Fail(const std::string& reason) const {
  throw Error(ErrorKind::kTargetUnwritable, "cannot write " + path_ + " (" + reason + ")");
}

void TargetFile::FailAsExisting() const { throw Error(ErrorKind::kTargetExists, path_ + " exists"); }

}  // namespace zrml::convert
