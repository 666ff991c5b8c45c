#include "tools/zrml/convert/target_file.h"

#include "tools/zrml/failure.h"

namespace zrml {

void TargetFile::Fail(const std::wstring& reason) const {
  throw Failure(ExitStatus::kUnreadable, L"cannot write " + path_ + L" (" + reason + L")");
}

void TargetFile::FailAsExisting() const {
  throw Failure(ExitStatus::kUnreadable, path_ + L" exists; --force replaces it");
}

}  // namespace zrml
