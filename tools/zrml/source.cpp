#include "tools/zrml/source.h"

#include <string_view>

#include "common/platform/platform.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/host_system.h"

namespace zrml {
namespace {

constexpr std::wstring_view kSeparators = L"/\\";

bool IsRoot(std::wstring_view path) { return path.size() < 2 || path[path.size() - 2] == L':'; }

// Shells complete a folder's name with a separator, which providers would repeat in what they show.
std::wstring WithoutLastSeparator(std::wstring path) {
  while (!path.empty() && kSeparators.find(path.back()) != std::wstring_view::npos && !IsRoot(path))
    path.pop_back();
  return path;
}

std::wstring FolderOf(const std::wstring& file) {
  const std::size_t separator = file.find_last_of(kSeparators);
  return separator == std::wstring::npos ? L"." : WithoutLastSeparator(file.substr(0, separator + 1));
}

}  // namespace

bool Source::FindProvider(const std::wstring& path) {
  for (int i = 0; i < plugin_.ProviderCount(); ++i) {
    server_ = plugin_.CreateServer(i);
    if (server_->CanOpen(path) && server_->ValidateSource(path)) return true;
  }
  server_.reset();
  return false;
}

Source Source::Open(const std::wstring& path, const std::wstring& pluginPath) {
  const bool isFile = platform::IsFile(path);
  if (!isFile && !platform::IsDirectory(path)) {
    const std::wstring reason = WhyOutOfReach(path);
    if (!reason.empty())
      throw Failure(ExitStatus::kUnreadable, L"cannot reach " + path + L" (" + reason + L")");
    throw Failure(ExitStatus::kNoSuchPath, L"there is no file or folder " + path);
  }
  Source source(path, PluginLibrary::Load(pluginPath.empty() ? DefaultPluginPath() : pluginPath));
  const std::wstring whole = isFile ? path : WithoutLastSeparator(path);
  bool opened = false;
  if (source.FindProvider(whole)) {
    opened = source.Server().Open(whole);
  } else if (isFile && source.FindProvider(FolderOf(path))) {
    opened = source.Server().OpenFileInSet(FolderOf(path), path);
  } else {
    throw Failure(ExitStatus::kNoProvider, L"no provider reads " + path);
  }
  if (!opened) {
    throw Failure(ExitStatus::kUnreadable, source.Server().GetProviderName() + L" cannot open " + path);
  }
  return source;
}

void RequireFiles(int count) {
  std::wstring error;
  if (CanOpenFiles(count, error)) return;
  throw Failure(ExitStatus::kUnreadable,
                L"cannot have " + std::to_wstring(count) + L" more files open (" + error + L")");
}

int PositionOf(int number, int count, const std::wstring& noun, const std::wstring& owner) {
  if (number >= 1 && number <= count) return number - 1;
  std::wstring message = L"there is no " + noun + L' ' + std::to_wstring(number) + L": " + owner + L" has ";
  if (count < 1) {
    message += L"no " + noun + L's';
  } else if (count == 1) {
    message += L"only " + noun + L" 1";
  } else {
    message += noun + L"s 1 to " + std::to_wstring(count);
  }
  throw Failure(ExitStatus::kWrongUsage, message);
}

int FindSample(CDataServerImpl& server, int sampleNumber) {
  return PositionOf(sampleNumber, server.GetSampleCount(), L"sample", L"the source");
}

FunctionPosition FindFunction(CDataServerImpl& server, int sampleNumber, int functionNumber) {
  FunctionPosition position;
  position.sample = FindSample(server, sampleNumber);
  position.function = PositionOf(functionNumber, server.GetFunctionCount(position.sample), L"function",
                                 L"sample " + std::to_wstring(sampleNumber));
  return position;
}

}  // namespace zrml
