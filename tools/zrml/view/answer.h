// What the page asks for and gets: facts as JSON, and numbers as a curve or as a grid of cells. A kept page
// has answers inside; the server sends one for each request.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

namespace zrml::view {

using Json = nlohmann::ordered_json;

/// A chromatogram or a spectrum.
struct Curve {
  std::vector<double> x;  ///< minutes, m/z or nm
  std::vector<double> y;
  std::vector<std::int32_t> scans;  ///< positions, where points are scans
};

/// The largest value of each cell, in 255 steps from 1; 0 where there is none. Row by row, the lowest first.
struct Grid {
  int columns = 0;
  int rows = 0;
  std::vector<std::uint8_t> cells;
};

struct Answer {
  Json facts = Json::object();
  Curve curve = {};
  Grid grid = {};
};

/// How numbers of a curve are written. Short ones, of single precision, have no positions of scans.
enum class Numbers { kWhole, kShort, kShortY };

/// Bytes that are not UTF-8, as a file or a client may have them, become replacement characters.
std::string JsonText(const Json& json);

/// For the server: the length of the JSON as 8 bytes, the JSON, and the arrays, each from a multiple of 8
/// bytes on. All little-endian.
std::string FrameOf(const Answer& answer, Numbers numbers = Numbers::kWhole);

/// For a script in a page: an object with the JSON, and the arrays in base64. No "<" is in it.
std::string ScriptOf(const Answer& answer, Numbers numbers);

/// JSON that may stand inside of a script element.
std::string ScriptJson(const Json& json);

}  // namespace zrml::view
