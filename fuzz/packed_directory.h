// A whole raw directory as one input: records of a byte for the file, a u16 length and that many bytes. The
// last record may be cut short. Records of the same file are joined in order.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "fuzz/input.h"
#include "fuzz/simulated_files.h"

namespace zrml::fuzz {

/// The file byte counts modulo the file names that a directory of three functions can have.
Files UnpackDirectory(Input input);

/// Cuts the point counts of the scan indices to 12 of their 22 bits: more points take the same path through
/// the code, but a few bytes could keep a fuzzer busy for seconds.
void CutPointCounts(Files& files);

/// The inverse of UnpackDirectory, for seeds. Files that an input cannot refer to are left out.
std::vector<std::byte> PackDirectory(const std::map<std::string, std::vector<std::byte>>& files);

}  // namespace zrml::fuzz
