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

struct SourceFiles {
  std::vector<SourceFile> files;
  std::vector<std::wstring> closed;   // names of those that nobody here may open
  std::vector<std::wstring> broken;   // and of those that break off
  std::optional<std::wstring> error;  // why the folder is not listed, or not to its end
};

/// The regular files of the folder `path`, by name, or of the folder that holds the file `path`; of a report
/// the file alone. Reads them whole, on `threads` threads.
SourceFiles ListSourceFiles(const std::wstring& path, bool isReport, int threads);

/// What the files of a source were when it was made: their sizes, and when they were last written.
class SourceStamp {
 public:
  /// Without the files of a folder that cannot be listed.
  SourceStamp(const std::wstring& path, bool isReport);

  /// The name of one that is gone or another since.
  std::optional<std::wstring> FindChange() const;

 private:
  struct Stamp {
    std::filesystem::path path;
    std::uintmax_t size = 0;
    std::filesystem::file_time_type written;

    bool operator==(const Stamp&) const = default;
  };

  static std::optional<Stamp> StampOf(const std::filesystem::path& path);

  std::vector<Stamp> stamps_;
};

/// The last part of a path without ".raw" or ".rpt": what converted files are called after. A data file of a
/// folder gives the folder's name, then its own: "run_FUNC001" for "run.raw/_FUNC001.DAT".
std::wstring SourceName(const std::wstring& path, bool isReport);

}  // namespace zrml
