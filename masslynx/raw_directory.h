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
#include "masslynx/header.h"
#include "masslynx/scandata/scan_reader.h"
#include "masslynx/scandata/scan_room.h"

namespace zrml::masslynx {

class RawDirectory {
 public:
  /// No value when the header or the function table cannot be read.
  static std::optional<RawDirectory> Open(const platform::SystemPath& folder, Findings* findings = nullptr);

  const platform::SystemPath& Folder() const { return folder_; }
  const HeaderLines& Header() const { return header_; }

  /// Those of the table, also without a data file, then processed ones.
  std::span<const FunctionRecord> Functions() const { return functions_; }
  /// The position of the absorbance function, the last of several.
  std::optional<std::size_t> FindAbsorbance() const;
  /// Whether scans are known of: by a data file or an index, also one that the system refuses to open.
  bool HasScans(std::size_t function) const;
  /// The name of the data file as it stands in the folder; of one that does not open, as it should be.
  platform::SystemPath DataFileName(std::size_t function);

  /// With its index and statistics, which are loaded anew after a refusal.
  FunctionRecord& LoadedFunction(std::size_t function);
  /// The bytes of a scan, or as many as its data file has. Valid until the next call. No value when the data
  /// file does not open.
  std::optional<Bytes> ReadScan(std::size_t function, const ScanRoom& room);
  /// "_FUNC001.DAT is missing", of one that does not open.
  std::string WhyNoData(std::size_t function) const;

  /// What the system has refused since this was asked last, as NoticeRefusal() has it; then nothing that was
  /// read since is to be believed.
  std::string TakeRefusal() { return std::exchange(refusal_, {}); }

 private:
  RawDirectory() = default;

  void OpenData(std::size_t function);

  platform::SystemPath folder_;
  HeaderLines header_;
  std::vector<FunctionRecord> functions_;
  std::vector<bool> isLoaded_;  // of each function: the index
  platform::File data_;
  std::size_t dataOf_ = 0;  // the function, when a data file is open
  ScanReader reader_;
  std::string refusal_;
};

/// All that is known of damage without reading points: of the structure of every file, and of whether files
/// reach as far as their index says. Nothing of a folder that does not open.
void CollectFindings(const platform::SystemPath& folder, Findings& findings);

}  // namespace zrml::masslynx
