#include "tools/zrml/list_file.h"

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string_view>

#include "common/platform/paths.h"
#include "common/platform/platform.h"
#include "common/text_file.h"
#include "tools/zrml/failure.h"

namespace zrml::tool {
namespace {

constexpr std::uint64_t kMostBytes = std::uint64_t{64} << 20;

std::string ReadStream(std::istream& stream) { return {std::istreambuf_iterator<char>(stream), {}}; }

std::string ReadFile(const std::string& path, const std::string& things) {
  const platform::SystemPath file = platform::FromUtf8Path(path);
  if (platform::IsDevice(file)) {  // such as what a shell's <(command) names
    std::ifstream pipe(std::filesystem::path(file), std::ios::binary);
    return ReadStream(pipe);
  }
  const platform::File opened = platform::File::OpenSystemPath(file);
  if (!opened.IsOpen()) {
    if (platform::IsDirectory(file))
      throw Failure(ExitStatus::kWrongUsage, path + " is a folder; a list of " + things + " is a file");
    const std::string reason = platform::WhyClosed(file);
    if (reason.empty()) throw Failure(ExitStatus::kNoSuchPath, "there is no file " + path);
    throw Failure(ExitStatus::kUnreadable, path + " cannot be opened (" + reason + ")");
  }
  if (opened.Size() > kMostBytes)
    throw Failure(ExitStatus::kWrongUsage, path + ": a list of " + things + " has 64 MiB at most");
  std::string text = ReadTextBytes(opened);
  if (opened.IsRefused()) throw Failure(ExitStatus::kUnreadable, path + ' ' + opened.Refusal());
  return text;
}

std::string ListNameOf(std::string_view path) { return path == "-" ? "standard input" : std::string(path); }

// Other bytes than those of UTF-8 may be in names of files.
void RequireUtf8(const std::string& path, const std::string& things, std::string_view text) {
  const bool isUtf16 = text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF");
  if (!isUtf16 && text.find('\0') == text.npos) return;
  throw Failure(ExitStatus::kWrongUsage, ListNameOf(path) + ": a list of " + things +
                                             " is text in UTF-8, and this is " +
                                             (isUtf16 ? "UTF-16" : "not"));
}

}  // namespace

std::string ReadListFile(const std::string& path, const std::string& things) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  std::string text = path == "-" ? ReadStream(std::cin) : ReadFile(path, things);
  RequireUtf8(path, things, text);
  if (text.starts_with(kByteOrderMark)) text.erase(0, kByteOrderMark.size());
  return text;
}

std::vector<std::string_view> LinesOf(std::string_view path, std::string_view text) {
  if (text.find('\n') == text.npos && text.find('\r') != text.npos) {
    throw Failure(ExitStatus::kWrongUsage,
                  ListNameOf(path) + ": its lines end with CR alone, not with LF or CR LF");
  }
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string_view& line = lines.emplace_back(text.substr(0, end));
    text.remove_prefix(end == text.npos ? text.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
  }
  return lines;
}

std::vector<std::string> ReadLines(const std::string& path, const std::string& things) {
  constexpr std::string_view kBlank = " \t";
  std::vector<std::string> lines;
  const std::string text = ReadListFile(path, things);
  for (const std::string_view line : LinesOf(path, text)) {
    if (line.find_first_not_of(kBlank) != line.npos) lines.emplace_back(line);
  }
  if (lines.empty())
    throw Failure(ExitStatus::kWrongUsage, "there are no " + things + " in " + ListNameOf(path));
  return lines;
}

}  // namespace zrml::tool
