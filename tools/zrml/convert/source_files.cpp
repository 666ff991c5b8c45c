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

// In place of a checksum.
constexpr std::string_view kNotOpened = "not opened";
constexpr std::string_view kBrokenOff = "broken off";

// The SHA-1 in hexadecimal digits, kNotOpened or kBrokenOff.
std::string HashOf(const fs::path& path) {
  const platform::File file =
      platform::File::OpenSystemPath(path.native());  // a backslash may be in its name
  if (!file.IsOpen()) return std::string(kNotOpened);
  const std::uint64_t size = file.Size();
  std::vector<std::byte> buffer(kPiece);
  Sha1 hash;
  for (std::uint64_t at = 0; at < size;) {
    ThrowIfInterrupted();
    const std::size_t count = file.ReadAt(at, buffer);
    if (count == 0) return std::string(kBrokenOff);
    hash.Add(std::span(buffer).first(count));
    at += count;
  }
  return hash.Finish();
}

std::vector<fs::path> FilesIn(const fs::path& folder, std::error_code& error) {
  std::vector<fs::path> files;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    std::error_code ignored;  // a link that leads nowhere is none
    if (at->is_regular_file(ignored)) files.push_back(at->path());
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

SourceFiles ListSourceFiles(const std::wstring& path, bool isReport, int threads) {
  SourceFiles result;
  const FileList list = FilesOf(path, isReport);
  if (list.error) {
    result.error = L"cannot list " + WidePath(list.folder) + L" (" +
                   platform::FromNativePath(list.error.message()) + L")";
  }
  const auto hash = [&](std::size_t index, std::string& text) { text = HashOf(list.files[index]); };
  OrderedPieces hashes(list.files.size(), {static_cast<std::size_t>(threads), hash});
  for (const fs::path& file : list.files) {
    const std::wstring name = WidePath(file.filename());
    std::string sha1(hashes.Take());
    if (sha1 == kNotOpened) {
      result.closed.push_back(name);
    } else if (sha1 == kBrokenOff) {
      result.broken.push_back(name);
    } else {
      result.files.push_back({name, Uri(list.folder), std::move(sha1)});
    }
  }
  return result;
}

std::optional<SourceStamp::Stamp> SourceStamp::StampOf(const fs::path& path) {
  std::error_code sizeError;
  std::error_code timeError;
  Stamp stamp = {path, fs::file_size(path, sizeError), fs::last_write_time(path, timeError)};
  return sizeError || timeError ? std::nullopt : std::optional(std::move(stamp));
}

SourceStamp::SourceStamp(const std::wstring& path, bool isReport) {
  for (const fs::path& file : FilesOf(path, isReport).files) {
    if (std::optional<Stamp> stamp = StampOf(file)) stamps_.push_back(std::move(*stamp));
  }
}

std::optional<std::wstring> SourceStamp::FindChange() const {
  for (const Stamp& stamp : stamps_) {
    if (StampOf(stamp.path) != stamp) return WidePath(stamp.path.filename());
  }
  return std::nullopt;
}

std::wstring SourceName(const std::wstring& path, bool isReport) {
  const fs::path absolute = Absolute(path);
  const std::wstring own = WidePath(absolute.filename());
  if (!platform::IsFile(path) || isReport) return WithoutExtension(own);
  return WithoutExtension(WidePath(absolute.parent_path().filename())) + WidePath(absolute.stem().filename());
}

}  // namespace zrml
