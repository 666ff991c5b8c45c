#include "convert/source_files.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <span>

#include "common/platform/platform.h"
#include "common/text.h"
#include "convert/native_path.h"
#include "convert/ordered_pieces.h"
#include "convert/sha1.h"

namespace zrml::convert {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kReadPiece = 1u << 17;  // stays in the processor's cache
constexpr std::string_view kReportExtension = ".rpt";
constexpr std::array<std::string_view, 2> kExtensions = {".raw", kReportExtension};

std::string Uri(const fs::path& folder) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  constexpr std::string_view kPlain = "-._~/:";
  const std::string bytes = PathText(folder);
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
FileState ReadWhole(const fs::path& path, Checksums checksums, const Cancel& cancel, std::string& sha1) {
  const platform::File file =
      platform::File::OpenSystemPath(path.native());  // a backslash may be in its name
  if (!file.IsOpen()) return FileState::kClosed;
  const std::uint64_t size = file.Size();
  std::vector<std::byte> buffer(kReadPiece);
  Sha1 hash;
  for (std::uint64_t at = 0; at < size;) {
    ThrowIfCancelled(cancel);
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

FileList FilesOf(const std::string& path, source::Format format) {
  const fs::path absolute = AbsolutePath(path);
  const bool isFile = IsFile(path);
  FileList list = {isFile ? absolute.parent_path() : absolute, {}};
  if (isFile && format == source::Format::kReport) {
    list.files = {absolute};
  } else {
    list.files = FilesIn(list.folder, list.error);
  }
  return list;
}

std::string WithoutExtension(const std::string& name) {
  const std::string lower = ToLower(name);
  for (const std::string_view extension : kExtensions) {
    if (lower.size() > extension.size() && lower.ends_with(extension))
      return name.substr(0, name.size() - extension.size());
  }
  return name;
}

std::string NameOf(const fs::path& path) { return PathText(path.filename()); }

std::string SourceName(const std::string& path, source::Format format) {
  const fs::path absolute = AbsolutePath(path);
  if (!IsFile(path) || format == source::Format::kReport) return WithoutExtension(NameOf(absolute));
  return WithoutExtension(NameOf(absolute.parent_path())) + PathText(absolute.stem());
}

}  // namespace

bool IsByTheWay(const std::string& name, source::Format format) {
  return format == source::Format::kRawDirectory && !name.starts_with('_');
}

SourceFiles ListSourceFiles(const std::string& path, source::Format format, Checksums checksums, int threads,
                            const Cancel& cancel) {
  SourceFiles result;
  const FileList list = FilesOf(path, format);
  if (list.error) result.error = "cannot list " + PathText(list.folder) + " (" + list.error.message() + ")";
  std::vector<FileState> states(list.files.size());
  const auto read = [&](std::size_t index, std::string& sha1) {
    sha1.clear();
    states[index] = ReadWhole(list.files[index], checksums, cancel, sha1);
  };
  OrderedPieces checked(list.files.size(), {static_cast<std::size_t>(threads), read});
  for (std::size_t i = 0; i < list.files.size(); ++i) {
    const std::string name = NameOf(list.files[i]);
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
  return {path, platform::StampOf(path.native())};
}

SourceStamp::SourceStamp(const std::string& path) : path_(path) {
  const bool isFile = IsFile(path);
  if (isFile) files_.push_back(StampOf(AbsolutePath(path)));
  if (isFile && ToLower(path).ends_with(kReportExtension)) return;
  for (const fs::path& file : FilesOf(path, source::Format::kRawDirectory).files) {
    if (!IsByTheWay(NameOf(file), source::Format::kRawDirectory)) files_.push_back(StampOf(file));
  }
}

std::optional<std::string> SourceStamp::FindChange() const {
  const std::vector<Stamp> current = SourceStamp(path_).files_;
  const auto [was, is] = std::mismatch(files_.begin(), files_.end(), current.begin(), current.end());
  const bool isNew = is != current.end() && (was == files_.end() || is->path < was->path);
  if (was == files_.end() && !isNew) return std::nullopt;
  return NameOf((isNew ? is : was)->path);
}

std::string RunName(source::Source& source, int sample) {
  const std::string name = SourceName(source.Path(), source.GetFormat());
  return source.SampleCount() > 1 ? name + "-sample" + std::to_string(sample + 1) : name;
}

bool IsPartOf(source::Source& source, const std::string& target) {
  std::error_code ignored;
  const fs::path own = AbsolutePath(source.Path());
  const fs::path path = AbsolutePath(target);
  if (fs::equivalent(path, own, ignored)) return true;
  const fs::path folder = IsFile(source.Path()) ? own.parent_path() : own;
  return source.GetFormat() == source::Format::kRawDirectory &&
         fs::equivalent(path.parent_path(), folder, ignored);
}

}  // namespace zrml::convert
