// The files that a source consists of.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace zrml {

/// A file as a converted file names it.
struct SourceFile {
  std::wstring name;     // without folder
  std::string location;  // URI of its folder
  std::string sha1;
};

/// One that a source's data are not read from: it may be broken, or change, without harm.
bool IsByTheWay(const std::wstring& name, bool isReport);

struct SourceFiles {
  std::vector<SourceFile> files;
  std::vector<std::wstring> closed;   // names of those that nobody here may open
  std::vector<std::wstring> broken;   // and of those that break off
  std::optional<std::wstring> error;  // why the folder is not listed, or not to its end
};

enum class Checksums { kMade, kLeftOut };

/// The regular files of the folder `path`, by name, or of the folder that holds the file `path`; of a report
/// the file alone. Reads them whole, on `threads` threads.
SourceFiles ListSourceFiles(const std::wstring& path, bool isReport, Checksums checksums, int threads);

/// What the files that a source's data are read from were when it was made: their sizes, and when they were
/// last written to.
class SourceStamp {
 public:
  /// Of the file `path`, and of the raw directory that it is, or is in. Without the files of a folder that
  /// cannot be listed.
  explicit SourceStamp(const std::wstring& path);

  /// The name of one that is new, gone or another since.
  std::optional<std::wstring> FindChange() const;

 private:
  struct Stamp {
    std::filesystem::path path;
    std::uint64_t size = 0;
    std::int64_t written = 0;

    bool operator==(const Stamp&) const = default;
  };

  static Stamp StampOf(const std::filesystem::path& path);

  std::wstring path_;
  std::vector<Stamp> stamps_;
};

/// The last part of a path without ".raw" or ".rpt": what converted files are called after. A data file of a
/// folder gives the folder's name, then its own: "run_FUNC001" for "run.raw/_FUNC001.DAT".
std::wstring SourceName(const std::wstring& path, bool isReport);

}  // namespace zrml
