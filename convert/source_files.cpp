#include "convert/source_files.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <span>

#include "common/platform/platform.h"
#include "common/text.h"
#include "convert/native_path.h"
#include "convert/sha1.h"

namespace zrml::convert {
namespace {

constexpr std::size_t kReadPiece = 1u << 17;  // stays in the processor's cache
constexpr std::string_view kReportExtension = ".rpt";
constexpr std::array<std::string_view, 2> kExtensions = {".raw", kReportExtension};

enum class FileState : char { kWhole, kClosed, kBroken };

// Reads a whole file. `result` is its checksum in hexadecimal digits, or the reason why it breaks off.
FileState ReadWhole(const SystemPath& path, Checksums checksums, const Cancel& cancel, std::string& result) {
  const platform::File file = platform::File::OpenSystemPath(path);
  if (!file.IsOpen()) return FileState::kClosed;
  const std::uint64_t size = file.Size();
  std::vector<std::byte> buffer(kReadPiece);
  Sha1 hash;
  for (std::uint64_t at = 0; at < size;) {
    ThrowIfCancelled(cancel);
    const std::size_t count = file.ReadAt(at, buffer);
    if (count == 0) {
      result = file.IsRefused() ? file.Refusal() : platform::kHasShrunk;
      return FileState::kBroken;
    }
    if (checksums == Checksums::kMade) hash.Add(std::span(buffer).first(count));
    at += count;
  }
  if (checksums == Checksums::kMade) result = hash.Finish();
  return FileState::kWhole;
}

struct FolderList {
  SystemPath folder;
  platform::FileList files;
};

FolderList FilesOf(const std::string& path, source::Format format) {
  const SystemPath given = platform::FromUtf8Path(path);
  FolderList list = {FolderOfSource(path), {}};
  if (format == source::Format::kReport && platform::IsFile(given)) {
    list.files.names = {NameOf(platform::AbsolutePath(given))};
  } else {
    list.files = platform::ListFiles(list.folder);
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

bool IsDataFile(const SystemPath& path) {
  return !IsByTheWay(PathText(NameOf(path)), source::Format::kRawDirectory) && platform::IsFile(path);
}

// Empty when there is none. That of a data file holds the function table.
SystemPath RawDirectoryOf(const std::string& source) {
  const SystemPath given = platform::FromUtf8Path(source);
  if (!IsDataFile(given)) return platform::IsDirectory(given) ? given : SystemPath();
  SystemPath folder = FolderOfSource(source);
  for (const char* const table : {"_FUNCTNS.INF", "_functns.inf"}) {
    if (platform::IsThere(platform::PathIn(folder, platform::FromUtf8Path(table)))) return folder;
  }
  return {};
}

}  // namespace

bool IsByTheWay(const std::string& name, source::Format format) {
  return format == source::Format::kRawDirectory && !name.starts_with('_');
}

SourceFiles ListSourceFiles(const std::string& path, source::Format format, Checksums checksums,
                            const Cancel& cancel) {
  SourceFiles result;
  const FolderList list = FilesOf(path, format);
  if (!list.files.error.empty())
    result.error = "cannot list " + PathText(list.folder) + " (" + list.files.error + ")";
  result.isForbidden = list.files.isForbidden;
  for (const SystemPath& file : list.files.names) {
    const std::string name = PathText(file);
    std::string text;
    switch (ReadWhole(platform::PathIn(list.folder, file), checksums, cancel, text)) {
      case FileState::kWhole:
        result.files.push_back({name, FileUri(list.folder), std::move(text)});
        break;
      case FileState::kClosed:
        result.closed.push_back(name);
        break;
      case FileState::kBroken:
        result.broken.push_back({name, std::move(text)});
        break;
    }
  }
  return result;
}

SourceStamp::SourceStamp(const std::string& path) : path_(path) {
  const auto add = [this](const SystemPath& file) { files_.push_back({file, platform::StampOf(file)}); };
  const SystemPath given = platform::FromUtf8Path(path);
  const bool isFile = platform::IsFile(given);
  if (isFile) add(platform::AbsolutePath(given));
  if (isFile && ToLower(path).ends_with(kReportExtension)) return;
  const FolderList list = FilesOf(path, source::Format::kRawDirectory);
  for (const SystemPath& name : list.files.names) {
    if (!IsByTheWay(PathText(name), source::Format::kRawDirectory)) add(platform::PathIn(list.folder, name));
  }
}

std::uint64_t SourceStamp::Size() const {
  return std::accumulate(files_.begin(), files_.end(), std::uint64_t{0},
                         [](std::uint64_t sum, const Stamp& file) { return sum + file.stamp.size; });
}

std::int64_t SourceStamp::LastWritten() const {
  std::int64_t last = 0;
  for (const Stamp& file : files_) last = std::max(last, file.stamp.written);
  return last;
}

std::optional<std::string> SourceStamp::FindChange() const {
  const std::vector<Stamp> current = SourceStamp(path_).files_;
  const auto [was, is] = std::mismatch(files_.begin(), files_.end(), current.begin(), current.end());
  const bool isNew = is != current.end() && (was == files_.end() || is->path < was->path);
  if (was == files_.end() && !isNew) return std::nullopt;
  return PathText(NameOf((isNew ? is : was)->path));
}

std::string SourceName(const std::string& path, source::Format format) {
  const SystemPath given = platform::FromUtf8Path(path);
  const SystemPath own = platform::AbsolutePath(given);
  if (format == source::Format::kReport || !platform::IsFile(given))
    return WithoutExtension(PathText(NameOf(own)));
  return WithoutExtension(PathText(NameOf(FolderOfSource(path)))) + StemOf(own);
}

std::string RunName(source::Source& source, int sample) {
  const std::string name = SourceName(source.Path(), source.GetFormat());
  return source.SampleCount() > 1 ? name + "-sample" + std::to_string(sample + 1) : name;
}

SourceOwners::SourceOwners(const std::vector<std::string>& sources) : sources_(sources) {
  const auto add = [](Places& places, const SystemPath& path, std::size_t place) {
    if (const std::optional<platform::FileId> id = platform::IdOf(path)) places.emplace(*id, place);
  };
  for (std::size_t place = 0; place < sources.size(); ++place) {
    add(folders_, RawDirectoryOf(sources[place]), place);
    add(given_, platform::FromUtf8Path(sources[place]), place);
  }
}

const std::string* SourceOwners::Find(const std::string& target) const {
  const SystemPath path = platform::FollowLinks(platform::FromUtf8Path(target));
  const SystemPath folder = FolderOf(path);
  std::size_t first = sources_.size();
  const auto look = [&](const Places& places, const SystemPath& at) {
    const std::optional<platform::FileId> id = platform::IdOf(at);
    const auto found = id ? places.find(*id) : places.end();
    if (found != places.end()) first = std::min(first, found->second);
  };
  look(folders_, folder.empty() ? platform::FromUtf8Path(".") : folder);
  look(given_, path);
  return first < sources_.size() ? &sources_[first] : nullptr;
}

}  // namespace zrml::convert
