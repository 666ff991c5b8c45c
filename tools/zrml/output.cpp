#include "tools/zrml/output.h"

#include "tools/zrml/convert/interruption.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/format.h"
#include "tools/zrml/host_system.h"

namespace zrml {

void Output::Number(double value) { AppendNumber(value, buffer_); }

void Output::Finish() {
  std::wstring error;
  const WriteResult result = WriteStream(Stream::kOutput, buffer_, error);
  buffer_.clear();
  if (result == WriteResult::kReaderGone) throw ReaderGone();
  if (result == WriteResult::kInterrupted) throw Interrupted();
  if (result == WriteResult::kFailed) {
    throw Failure(ExitStatus::kUnreadable, L"cannot write the output (" + error + L")");
  }
}

void PrintError(const std::wstring& message) {
  std::wstring ignored;
  WriteStream(Stream::kError, "zrml: " + VisibleUtf8(message) + "\n", ignored);
}

}  // namespace zrml
