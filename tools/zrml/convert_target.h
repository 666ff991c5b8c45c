// Where commands write: files and their names, and standard output.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "common/platform/paths.h"
#include "convert/byte_sink.h"
#include "convert/source_files.h"
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

/// The files that a command has made.
class MadeFiles {
 public:
  void Add(const std::string& path);
  /// Also by another name: there are links, and systems that ignore case.
  bool Has(const std::string& path) const;

 private:
  std::set<std::string> paths_;
  std::set<platform::FileId> ids_;
};

/// The program's standard output.
class StandardOutput : public convert::ByteSink {
 public:
  void Write(std::string_view bytes) override;
};

}  // namespace zrml::tool
