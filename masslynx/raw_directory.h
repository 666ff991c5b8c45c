// A raw directory as its files tell of it: all functions with the numbers of their files, read in any order.
// Each file is read when it is first needed; one data file stays open: of the function that was read last.
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

namespace zrml::masslynx {

/// The functions of the table, also those without a data file, calibrated as the header says, then processed
/// ones; all with their labels. No value when the table cannot be read. `refusal` is as NoticeRefusal() has
/// it: of the other files.
std::optional<std::vector<FunctionRecord>> ReadFunctions(const platform::SystemPath& folder,
                                                         const HeaderLines& header, CutTable cutTable,
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

  /// As ReadFunctions() has them.
  std::span<const FunctionRecord> Functions() const { return functions_; }
  /// Whether scans are known of: by a data file or an index, also one that the system refuses to open.
  bool HasScans(std::size_t function) const;
  /// The name of the data file as it stands in the folder; of one that is not there, as it should be.
  platform::SystemPath DataFileName(std::size_t function) const;

  /// With its index and statistics, which are loaded anew after a refusal.
  FunctionRecord& LoadedFunction(std::size_t function);
  /// The bytes of a scan, or as many as its data file has. Valid until the next call. No value when the data
  /// file does not open.
  std::optional<Bytes> ReadScan(std::size_t function, const ScanRoom& room);
  /// "_FUNC001.DAT is missing", of one that does not open.
  std::string WhyNoData(std::size_t function) const;

  /// All that is known of damage without reading points: of the structure of every file, and of whether files
  /// reach as far as their index says. Loads what is not loaded yet; what the system refuses is a finding.
  Findings CollectFindings();

  /// What the system has refused since this was asked last, as NoticeRefusal() has it; then nothing that was
  /// read since is to be believed.
  std::string TakeRefusal() { return std::exchange(refusal_, {}); }

 private:
  // What is known of the files of a function beside its record.
  struct FunctionState {
    bool isLoaded = false;
    Findings findings;  // of the last attempt to load
  };

  RawDirectory() = default;

  void OpenData(std::size_t function);

  platform::SystemPath folder_;
  HeaderLines header_;
  std::vector<FunctionRecord> functions_;
  std::vector<FunctionState> states_;  // of each function
  Findings findings_;                  // of the files that describe the functions
  platform::File data_;
  std::size_t dataOf_ = 0;  // the function, when a data file is open
  ScanReader reader_;
  std::string refusal_;
};

}  // namespace zrml::masslynx
