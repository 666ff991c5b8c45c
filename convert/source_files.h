// The files that a source consists of: named and summed up in what is converted, and watched meanwhile.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "common/platform/paths.h"
#include "common/platform/platform.h"
#include "convert/hooks.h"

namespace zrml::convert {

/// A file as named in a converted file.
struct SourceFile {
  std::string name;      // without folder
  std::string location;  // URI of its folder
  std::string sha1;
};

/// A file that breaks off.
struct BrokenFile {
  std::string name;
  std::string problem;  // "cannot be read to its end (Input/output error)"
};

/// A file without data that are read: it may be broken, or change, without harm.
bool IsByTheWay(const std::string& name, source::Format format);

struct SourceFiles {
  std::vector<SourceFile> files;
  std::vector<std::string> closed;  // names of those that may not be opened
  std::vector<BrokenFile> broken;
  std::optional<std::string> error;  // why the folder is not listed, or not to its end
  bool isForbidden = false;          // it may not be listed, although its files may open
};

enum class Checksums { kMade, kLeftOut };

/// The regular files of the folder `path`, by name, or of the folder that holds the file `path`; for a report
/// only the file. Reads them whole.
SourceFiles ListSourceFiles(const std::string& path, source::Format format, Checksums checksums,
                            const Cancel& cancel);

/// The state of a source's data files at one time: their sizes, and when they were last written to.
class SourceStamp {
 public:
  /// Make it before the source is opened, when its format is not known yet.
  explicit SourceStamp(const std::string& path);

  /// When the last of them was written to, as FileStamp counts.
  std::int64_t LastWritten() const;

  /// Bytes of all of them.
  std::uint64_t Size() const;

  /// The name of a file that is new, gone or changed since.
  std::optional<std::string> FindChange() const;

 private:
  struct Stamp {
    platform::SystemPath path;
    platform::FileStamp stamp;

    bool operator==(const Stamp&) const = default;
  };

  std::string path_;
  std::vector<Stamp> files_;  // a report's alone, else also those of the raw directory there or around
};

/// The name of what is made of a source: the last part of its path without ".raw" or ".rpt". A data file of a
/// folder gives the folder's name, then its own: "run_FUNC001" for "run.raw/_FUNC001.DAT".
std::string SourceName(const std::string& path, source::Format format);
/// The same for `sample`: one of several has its number, "plate-sample2".
std::string RunName(source::Source& source, int sample);

/// Which of many sources a file would belong to. A question takes the same time however many there are.
class SourceOwners {
 public:
  /// The sources at these paths, which must outlive this.
  explicit SourceOwners(const std::vector<std::string>& sources);

  /// The first source that a file at `target` would belong to, or replace a part of; null when there is none.
  const std::string* Find(const std::string& target) const;
  /// Whether there is only one source.
  bool IsOne() const { return sources_.size() == 1; }

 private:
  using Places = std::map<platform::FileId, std::size_t>;  // in the list of sources

  const std::vector<std::string>& sources_;
  Places folders_;  // raw directories
  Places given_;
};

}  // namespace zrml::convert
