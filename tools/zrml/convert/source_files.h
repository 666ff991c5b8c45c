// The files that a source consists of, as a converted file names them.
#pragma once

#include <string>
#include <vector>

namespace zrml {

struct SourceFile {
  std::wstring name;     // without folder
  std::string location;  // URI of its folder
  std::string sha1;
};

/// The regular files of the folder `path`, by name, or of the folder that holds the file `path`; of a report
/// the file alone. Reads them whole, on `threads` threads. Throws a Failure when one cannot be read.
std::vector<SourceFile> ListSourceFiles(const std::wstring& path, bool isReport, int threads);

/// The last part of a path without ".raw" or ".rpt": what converted files are called after. A data file of a
/// folder gives the folder's name, then its own: "run_FUNC001" for "run.raw/_FUNC001.DAT".
std::wstring SourceName(const std::wstring& path, bool isReport);

}  // namespace zrml
