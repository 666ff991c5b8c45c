#include "tools/zrml/convert_target.h"

#include <algorithm>

#include "common/text.h"
#include "convert/error.h"
#include "convert/native_path.h"
#include "convert/source_files.h"
#include "convert/target_file.h"
#include "convert/whole_file.h"
#include "tools/zrml/convert_damage.h"
#include "tools/zrml/failure.h"
#include "tools/zrml/host_system.h"
#include "tools/zrml/interruption.h"
#include "tools/zrml/output.h"

namespace zrml::tool {

std::string TargetPath(const ConvertRequest& request, source::Source& source, int sample) {
  if (!request.file.empty()) return request.file;
  return convert::InFolder(request.folder, convert::RunName(source, sample) +
                                               ExtensionOf(request.conversion.format) +
                                               (request.isGzipped ? ".gz" : ""));
}

bool IsCurrent(const std::string& path, const ConvertRequest& request, source::Source& source, int sample) {
  const convert::Options& options = request.conversion;
  const platform::SystemPath target = platform::FromUtf8Path(path);
  if (!platform::IsFile(target) || platform::IsDevice(target)) return false;
  if (platform::StampOf(target).written <= convert::SourceStamp(source.Path()).LastWritten()) return false;
  const convert::Ending ending = convert::EndingOf(target, options.format, request.isGzipped);
  if (ending != convert::Ending::kEmpty) return ending == convert::Ending::kWhole;
  try {
    return !convert::HasPoints(source, sample, options.selection, options.format);
  } catch (const convert::Error&) {
    return false;  // the conversion ends with it
  }
}

void RequireOneSource(const std::vector<std::string>& sources) {
  if (sources.size() > 1) throw Failure(ExitStatus::kWrongUsage, "several sources do not fit into one file");
}

void RefuseFolderAsFile(const std::string& file) {
  const bool isFolder = convert::EndsAsFolder(file) || platform::IsDirectory(platform::FromUtf8Path(file));
  if (isFolder) throw Failure(ExitStatus::kWrongUsage, file + " is a folder; -o takes one, -b a file");
}

void RefuseUnlessFile(const std::string& path) {
  const platform::SystemPath target = platform::FromUtf8Path(path);
  if (platform::IsDirectory(target) || platform::IsDevice(target))
    throw Failure(ExitStatus::kWrongUsage, path + " exists and is not a regular file");
}

std::unique_ptr<convert::ByteSink> MakeTargetFile(const std::string& path, bool isForced) {
  const auto existing = isForced ? convert::Existing::kReplace : convert::Existing::kKeep;
  try {
    return std::make_unique<convert::TargetFile>(path, existing, IsInterrupted);
  } catch (const convert::Error& error) {
    throw FailureOf(error);
  }
}

void RefuseSourceAsTarget(const std::string& path, const convert::SourceOwners& sources) {
  const std::string* const owner = sources.Find(path);
  if (owner == nullptr) return;
  const std::string which = sources.IsOne() ? "" : " " + *owner;
  throw Failure(ExitStatus::kWrongUsage, path + " is a part of the source" + which);
}

void MakeFolder(const std::string& folder) {
  const std::string error = convert::MakeFolders(folder);
  if (error.empty()) return;
  throw Failure(ExitStatus::kUnreadable, "cannot make the folder " + folder + " (" + error + ")");
}

// Names that differ in case may be one file.
bool MadeFiles::IsBegun(const std::string& name, const std::optional<platform::FileId>& id) const {
  return begun_.contains(ToLower(name)) ||
         (id &&
          std::any_of(begun_.begin(), begun_.end(), [&](const auto& each) { return each.second == id; }));
}

// The same for all names of a file that is not there yet, to which links may lead, also by its folder.
std::string MadeFiles::NameOf(const std::string& path) {
  const platform::SystemPath file =
      platform::AbsolutePath(platform::FollowLinks(platform::FromUtf8Path(path)));
  const platform::SystemPath folder = convert::FolderOf(file);
  const std::optional<platform::FileId> id = platform::IdOf(folder);
  if (!id) return platform::ToUtf8Path(file);
  return std::to_string(id->volume) + ':' + std::to_string(id->file) + ':' +
         platform::ToUtf8Path(file.substr(folder.size()));
}

bool MadeFiles::Claim(const std::string& path) {
  const std::string name = NameOf(path);
  convert::Lock lock(mutex_);
  std::optional<platform::FileId> id;
  released_.Wait(lock, [&] {
    id = platform::IdOf(platform::FromUtf8Path(path));
    return !IsBegun(name, id);
  });
  if (names_.contains(name) || (id && ids_.contains(*id))) return false;
  begun_.emplace(ToLower(name), id);
  return true;
}

void MadeFiles::Release(const std::string& path, bool isMade) {
  const std::string name = NameOf(path);
  const convert::Lock lock(mutex_);
  begun_.erase(ToLower(name));
  released_.NotifyAll();
  if (!isMade) return;
  names_.insert(name);
  if (const auto id = platform::IdOf(platform::FromUtf8Path(path))) ids_.insert(*id);
}

void StandardOutput::Write(std::string_view bytes) {
  std::string error;
  const WriteResult result = WriteStream(Stream::kOutput, bytes, error);
  if (result == WriteResult::kWritten) return;
  if (result == WriteResult::kInterrupted) throw source::Cancelled();
  if (result == WriteResult::kReaderGone) throw ReaderGone();
  throw convert::Error(convert::ErrorKind::kTargetUnwritable,
                       "cannot write to standard output (" + error + ")");
}

}  // namespace zrml::tool
