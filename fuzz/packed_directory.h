// A whole raw directory as one input: records of a byte that names the file, a u16 length and as many bytes.
// The last record may be cut short. Records of one file are joined in their order.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "fuzz/input.h"
#include "fuzz/simulated_files.h"

namespace zrml::fuzz {

/// The file byte counts round through the names that a directory of three functions can have.
Files UnpackDirectory(Input input);

/// Cuts the point counts of the scan indices to 12 of their 22 bits: more points take no other way through
/// the code, but a few bytes would keep a fuzzer busy for seconds.
void CutPointCounts(Files& files);

/// The inverse of UnpackDirectory, for seeds. Files that an input cannot name are left out.
std::vector<std::byte> PackDirectory(const std::map<std::string, std::vector<std::byte>>& files);

}  // namespace zrml::fuzz
