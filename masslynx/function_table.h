// Reads "_FUNCTNS.INF" into function records and keeps the list of them. docs/function-table.md
#pragma once

#include <string>
#include <vector>

#include "masslynx/function_record.h"
#include "masslynx/scandata/calibration.h"

namespace zrml {

/// The function list while a directory is opened. Positions count all records of the file until
/// RemoveUnlisted().
struct FunctionTable {
  std::vector<FunctionRecord> functions;
  std::vector<bool> unlisted;  ///< by position: no data file, or the absorbance function
  FunctionRecord absorbance;   ///< its typeCode is kNoFunction when there is none
};

/// Reads the table of `directory` and what each function has beside it: calibration and data files. False,
/// with `table` in no defined state, when the file is missing, is no whole number of records, or holds more
/// functions than can be numbered.
bool ReadFunctionTable(const std::wstring& directory, const std::vector<CalibrationLine>& calibration,
                       FunctionTable& table);

/// Takes the unlisted functions out of the list; the others keep their order.
void RemoveUnlisted(FunctionTable& table);

/// Reduces the list to the one function that a data file's lower-case name ("_func002.dat") means. False,
/// with the list unchanged, when there is none.
bool SelectFunction(const std::wstring& fileName, std::vector<FunctionRecord>& functions);

}  // namespace zrml
