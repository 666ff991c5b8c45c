#include "tools/zrml/convert/source_files.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <span>

#include "common/platform/platform.h"
#include "common/text.h"
#include "tools/zrml/convert/interruption.h"
#include "tools/zrml/convert/native_path.h"
#include "tools/zrml/convert/ordered_pieces.h"
#include "tools/zrml/convert/sha1.h"
#include "tools/zrml/failure.h"

namespace zrml {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPiece = 1u << 17;  // stays in the processor's cache
constexpr std::array<std::wstring_view, 2> kExtensions = {L".raw", L".rpt"};

fs::path Absolute(const std::wstring& path) {
  std::error_code error;
  fs::path absolute = fs::absolute(NativePath(path), error).lexically_normal();
  if (!absolute.has_filename()) absolute = absolute.parent_path();  // "run.raw/", "."
  return absolute;
}

std::string Uri(const fs::path& folder) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::string_view kPlain = "-._~/:";
  const std::string bytes = PathBytes(folder);
  std::string uri = bytes.starts_with('/') ? "file://" : "file:///";
  for (const char c : bytes) {
    const bool isAlphanumeric = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    const auto byte = static_cast<unsigned char>(c);
    if (isAlphanumeric || kPlain.find(c) != std::string_view::npos) {
      uri.push_back(c);
    } else {
      uri.append({'%', kDigits[byte >> 4], kDigits[byte & 15]});
    }
  }
  return uri;
}

[[noreturn]] void FailToRead(const fs::path& file) {
  throw Failure(ExitStatus::kUnreadable, L"cannot read " + WidePath(file));
}

std::string HashOf(const fs::path& path) {
  const platform::File file =
      platform::File::OpenSystemPath(path.native());  // a backslash may be in its name
  if (!file.IsOpen()) FailToRead(path);
  const std::uint64_t size = file.Size();
  std::vector<std::byte> buffer(kPiece);
  Sha1 hash;
  for (std::uint64_t at = 0; at < size;) {
    ThrowIfInterrupted();
    const std::size_t count = file.ReadAt(at, buffer);
    if (count == 0) FailToRead(path);
    hash.Add(std::span(buffer).first(count));
    at += count;
  }
  return hash.Finish();
}

std::vector<fs::path> FilesIn(const fs::path& folder) {
  std::error_code error;
  std::vector<fs::path> files;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    std::error_code ignored;  // a link that leads nowhere is none
    if (at->is_regular_file(ignored)) files.push_back(at->path());
  }
  if (error) FailToRead(folder);
  std::sort(files.begin(), files.end());
  return files;
}

std::wstring WithoutExtension(const std::wstring& name) {
  const std::wstring lower = ToLower(name);
  for (const std::wstring_view extension : kExtensions) {
    if (lower.size() > extension.size() && lower.ends_with(extension))
      return name.substr(0, name.size() - extension.size());
  }
  return name;
}

}  // namespace

std::vector<SourceFile> ListSourceFiles(const std::wstring& path, bool isReport, int threads) {
  const fs::path absolute = Absolute(path);
  const bool isFile = platform::IsFile(path);
  const fs::path folder = isFile ? absolute.parent_path() : absolute;
  const std::vector<fs::path> files = isFile && isReport ? std::vector<fs::path>{absolute} : FilesIn(folder);
  const auto hash = [&](std::size_t index, std::string& text) { text = HashOf(files[index]); };
  OrderedPieces hashes(files.size(), {static_cast<std::size_t>(threads), hash});
  std::vector<SourceFile> sources;
  for (const fs::path& file : files) {
    sources.push_back({WidePath(file.filename()), Uri(folder), hashes.Take()});
  }
  return sources;
}

std::wstring SourceName(const std::wstring& path, bool isReport) {
  const fs::path absolute = Absolute(path);
  const std::wstring own = WidePath(absolute.filename());
  if (!platform::IsFile(path) || isReport) return WithoutExtension(own);
  return WithoutExtension(WidePath(absolute.parent_path().filename())) + WidePath(absolute.stem().filename());
}

}  // namespace zrml
