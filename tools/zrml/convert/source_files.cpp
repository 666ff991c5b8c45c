#include "tools/zrml/convert/source_files.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <span>

#include "common/platform/platform.h"
#include "common/text.h"
#include "tools/zrml/check/raw_check.h"
#include "tools/zrml/convert/interruption.h"
#include "tools/zrml/convert/native_path.h"
#include "tools/zrml/convert/ordered_pieces.h"
#include "tools/zrml/convert/sha1.h"

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

enum class FileState : char { kWhole, kClosed, kBroken };

// Reads a file whole; `sha1` is its checksum in hexadecimal digits.
FileState ReadWhole(const fs::path& path, Checksums checksums, std::string& sha1) {
  const platform::File file =
      platform::File::OpenSystemPath(path.native());  // a backslash may be in its name
  if (!file.IsOpen()) return FileState::kClosed;
  const std::uint64_t size = file.Size();
  std::vector<std::byte> buffer(kPiece);
  Sha1 hash;
  for (std::uint64_t at = 0; at < size;) {
    ThrowIfInterrupted();
    const std::size_t count = file.ReadAt(at, buffer);
    if (count == 0) return FileState::kBroken;
    if (checksums == Checksums::kMade) hash.Add(std::span(buffer).first(count));
    at += count;
  }
  if (checksums == Checksums::kMade) sha1 = hash.Finish();
  return FileState::kWhole;
}

std::vector<fs::path> FilesIn(const fs::path& folder, std::error_code& error) {
  std::vector<fs::path> files;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    std::error_code unknown;
    const bool isFile = at->is_regular_file(unknown);
    const bool isNowhere = unknown == std::errc::no_such_file_or_directory;  // a link that leads there
    if (isFile || (unknown && !isNowhere)) files.push_back(at->path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

struct FileList {
  fs::path folder;
  std::vector<fs::path> files;
  std::error_code error = {};  // why the folder is not listed
};

FileList FilesOf(const std::wstring& path, bool isReport) {
  const fs::path absolute = Absolute(path);
  const bool isFile = platform::IsFile(path);
  FileList list = {isFile ? absolute.parent_path() : absolute, {}};
  if (isFile && isReport) {
    list.files = {absolute};
  } else {
    list.files = FilesIn(list.folder, list.error);
  }
  return list;
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

bool IsByTheWay(const std::wstring& name, bool isReport) { return !isReport && !name.starts_with(L'_'); }

SourceFiles ListSourceFiles(const std::wstring& path, bool isReport, Checksums checksums, int threads) {
  SourceFiles result;
  const FileList list = FilesOf(path, isReport);
  if (list.error) {
    result.error = L"cannot list " + WidePath(list.folder) + L" (" +
                   platform::FromNativePath(list.error.message()) + L")";
  }
  std::vector<FileState> states(list.files.size());
  const auto read = [&](std::size_t index, std::string& sha1) {
    sha1.clear();
    states[index] = ReadWhole(list.files[index], checksums, sha1);
  };
  OrderedPieces checked(list.files.size(), {static_cast<std::size_t>(threads), read});
  for (std::size_t i = 0; i < list.files.size(); ++i) {
    const std::wstring name = WidePath(list.files[i].filename());
    std::string sha1(checked.Take());
    switch (states[i]) {
      case FileState::kWhole:
        result.files.push_back({name, Uri(list.folder), std::move(sha1)});
        break;
      case FileState::kClosed:
        result.closed.push_back(name);
        break;
      case FileState::kBroken:
        result.broken.push_back(name);
        break;
    }
  }
  return result;
}

SourceStamp::Stamp SourceStamp::StampOf(const fs::path& path) {
  const platform::File file = platform::File::OpenSystemPath(path.native());
  return {path, file.Size(), file.WriteTime()};
}

SourceStamp::SourceStamp(const std::wstring& path) : path_(path) {
  if (platform::IsFile(path)) stamps_.push_back(StampOf(Absolute(path)));
  std::wstring folder;
  if (!IsRawDirectory(path, folder)) return;
  for (const fs::path& file : FilesOf(folder, false).files) {
    if (!IsByTheWay(WidePath(file.filename()), false)) stamps_.push_back(StampOf(file));
  }
}

std::optional<std::wstring> SourceStamp::FindChange() const {
  const std::vector<Stamp> stamps = SourceStamp(path_).stamps_;
  const auto [was, is] = std::mismatch(stamps_.begin(), stamps_.end(), stamps.begin(), stamps.end());
  const bool isNew = is != stamps.end() && (was == stamps_.end() || is->path < was->path);
  if (was == stamps_.end() && !isNew) return std::nullopt;
  return WidePath((isNew ? is : was)->path.filename());
}

std::wstring SourceName(const std::wstring& path, bool isReport) {
  const fs::path absolute = Absolute(path);
  const std::wstring own = WidePath(absolute.filename());
  if (!platform::IsFile(path) || isReport) return WithoutExtension(own);
  return WithoutExtension(WidePath(absolute.parent_path().filename())) + WidePath(absolute.stem().filename());
}

}  // namespace zrml
