// Where commands write: files and their names, and standard output.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "common/platform/paths.h"
#include "convert/byte_sink.h"
#include "convert/source_files.h"
#include "convert/threads.h"
#include "source/source.h"
#include "tools/zrml/convert_request.h"

namespace zrml::tool {

/// The path that a sample is converted to.
std::string TargetPath(const ConvertRequest& request, source::Source& source, int sample);

/// Whether `path` already holds the converted `source`: a whole file, newer than the source.
bool IsCurrent(const std::string& path, const ConvertRequest& request, source::Source& source, int sample);

/// Throws a Failure unless there is one source at most, which a named file is for.
void RequireOneSource(const std::vector<std::string>& sources);

/// Throws a Failure when `file` is or looks like a folder.
void RefuseFolderAsFile(const std::string& file);

/// With its parents. Throws a Failure.
void MakeFolder(const std::string& folder);

/// Throws a Failure when `path` holds something that a file cannot replace.
void RefuseUnlessFile(const std::string& path);

/// A file that is there once it is finished. Throws a Failure when it cannot be made, or exists and is kept.
std::unique_ptr<convert::ByteSink> MakeTargetFile(const std::string& path, bool isForced);

/// Throws a Failure when the path is a part of one of the sources, which must survive the command even when
/// files may be replaced.
void RefuseSourceAsTarget(const std::string& path, const convert::SourceOwners& sources);

/// The files that a command has made, and those that it is making. Used by all threads at once.
class MadeFiles {
 public:
  /// Whether the file is for the caller to make, who then calls Release; false when it is made already, also
  /// by another name: there are links, and systems that ignore case. Waits while others make it.
  bool Claim(const std::string& path);
  void Release(const std::string& path, bool isMade);

 private:
  static std::string NameOf(const std::string& path);
  bool IsBegun(const std::string& name, const std::optional<platform::FileId>& id) const;

  convert::Mutex mutex_;  // guards what follows
  convert::Condition released_;
  std::map<std::string, std::optional<platform::FileId>> begun_;  // by name in lower case
  std::set<std::string> names_;
  std::set<platform::FileId> ids_;
};

/// The program's standard output.
class StandardOutput : public convert::ByteSink {
 public:
  void Write(std::string_view bytes) override;
};

}  // namespace zrml::tool
