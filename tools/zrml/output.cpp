#include "tools/zrml/output.h"

#include "tools/zrml/failure.h"
#include "tools/zrml/format.h"
#include "tools/zrml/host_system.h"

namespace zrml::tool {
namespace {

thread_local std::vector<std::string>* kept = nullptr;

}  // namespace

void Output::Number(double value) { AppendNumber(value, buffer_); }
void Output::ShortNumber(double value) { AppendShortNumber(value, buffer_); }

void Output::Finish() {
  const std::string piece = std::exchange(buffer_, {});
  buffer_.reserve(piece.capacity());
  write_(piece);
}

void Output::WriteStandardOutput(std::string_view piece) {
  std::string error;
  const WriteResult result = WriteStream(Stream::kOutput, piece, error);
  if (result == WriteResult::kReaderGone) throw ReaderGone();
  if (result == WriteResult::kInterrupted) throw source::Cancelled();
  if (result == WriteResult::kFailed) {
    throw Failure(ExitStatus::kUnreadable, "cannot write the output (" + error + ")");
  }
}

KeptErrors::KeptErrors(std::vector<std::string>& messages) { kept = &messages; }
KeptErrors::~KeptErrors() { kept = nullptr; }

void PrintError(const std::string& message) {
  if (kept != nullptr) return kept->push_back(message);
  std::string ignored;
  WriteStream(Stream::kError, "zrml: " + VisibleText(message) + "\n", ignored);
}

}  // namespace zrml::tool
