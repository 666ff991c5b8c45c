// The text files of a raw directory, "_HEADER.TXT" and "_extern.inf", line by line. Lines are bytes: they may
// hold any value.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tests/support/byte_writer.h"

namespace zrml {

enum class LineEnd { kLf, kCrLf };
enum class LastLine { kEnded, kUnended };

FileBytes WriteLines(const std::vector<std::string>& lines, LineEnd lineEnd = LineEnd::kCrLf,
                     LastLine lastLine = LastLine::kEnded);

/// The shortest text that reads as the same number.
std::string Shortest(double value);

/// "$$ Key: value".
std::string HeaderLine(std::string_view key, std::string_view value);

enum class Domain { kMass, kRoot };

/// "$$ Cal <kind>: c0,c1,...", followed by ",T1" in the root domain. `kind` is "MS1 Static", "Function 2",
/// ...
std::string CalLine(std::string_view kind, const std::vector<double>& coefficients,
                    Domain domain = Domain::kMass);

/// "Created by MassLynx v4.1" for `version` "4.1".
std::string CreatorLine(std::string_view version);

/// "Function Parameters - Function 3 - LABEL".
std::string FunctionHeading(int number, std::string_view label);

}  // namespace zrml
