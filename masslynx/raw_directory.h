// A raw directory as its files describe it: all functions under the numbers of their files, read in any
// order. Each file is read when first needed; one data file stays open, that of the function read last.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "common/findings.h"
#include "masslynx/function_record.h"
#include "masslynx/function_table.h"
#include "masslynx/header.h"
#include "masslynx/scandata/scan_reader.h"
#include "masslynx/scandata/scan_room.h"
#include "masslynx/scandata/zeroed_points.h"

namespace zrml::masslynx {

/// The functions of the table, including those without a data file, calibrated as the header says, then the
/// processed ones; all with their labels. No value when the table cannot be read. `refusal`, of the other
/// files: see NoticeRefusal().
std::optional<std::vector<FunctionRecord>> ReadFunctions(const platform::SystemPath& folder,
                                                         const HeaderLines& header, TableView view,
                                                         Findings* findings = nullptr,
                                                         std::string* refusal = nullptr);

/// The position of the absorbance function, the last of several, with or without a data file.
std::optional<std::size_t> FindAbsorbance(std::span<const FunctionRecord> functions);

class RawDirectory {
 public:
  /// No value when the header or the function table cannot be read.
  static std::optional<RawDirectory> Open(const platform::SystemPath& folder);

  const platform::SystemPath& Folder() const { return folder_; }
  const HeaderLines& Header() const { return header_; }

  /// As ReadFunctions() gives them.
  std::span<const FunctionRecord> Functions() const { return functions_; }
  /// Whether a data file or an index shows that there are scans, even one that the system refuses to open.
  bool HasScans(std::size_t function) const;
  /// The name of the data file as spelled in the folder; the expected name when it is missing.
  platform::SystemPath DataFileName(std::size_t function) const;

  /// With its index and statistics, which are loaded again after a refusal.
  FunctionRecord& LoadedFunction(std::size_t function);
  /// The bytes of a scan, or as many as its data file has, without zeros that it ends in where points were.
  /// Valid until the next call. No value when the data file does not open.
  std::optional<Bytes> ReadScan(std::size_t function, const ScanRoom& room);
  /// "_FUNC001.DAT is missing", for a file that does not open.
  std::string WhyNoData(std::size_t function) const;

  /// All damage that shows without reading points: in the structure of every file, and files shorter than
  /// their index says. Loads what is not loaded yet; files that the system refuses are findings.
  Findings CollectFindings();

  /// What the system has refused since the last call, see NoticeRefusal(); after a refusal nothing read since
  /// that call can be trusted.
  std::string TakeRefusal() { return std::exchange(refusal_, {}); }

 private:
  // What is known about a function's files in addition to its record.
  struct FunctionState {
    bool isLoaded = false;
    std::uint64_t dataSize = 0;  // of the data file, the largest that was seen when it was opened
    Findings findings;           // from the last attempt to load
    bool isTailKnown = false;
    std::optional<ZeroTail> tail;
  };

  RawDirectory() = default;

  void OpenData(std::size_t function);
  void NoticeShortRead(std::size_t function);
  const std::optional<ZeroTail>& TailOf(std::size_t function);
  void NoticeZeroTail(std::size_t function, Findings& findings);

  platform::SystemPath folder_;
  HeaderLines header_;
  std::vector<FunctionRecord> functions_;
  std::vector<FunctionState> states_;  // of each function
  Findings findings_;                  // in the files that describe the functions
  platform::File data_;
  std::size_t dataOf_ = 0;  // its function, when a data file is open
  ScanReader reader_;
  std::string refusal_;
};

}  // namespace zrml::masslynx
