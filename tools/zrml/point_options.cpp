#include "tools/zrml/point_options.h"

#include <string>

#include "tools/zrml/command.h"

namespace zrml::tool {
namespace {

std::optional<source::Polarity> ParsePolarity(const std::string& text) {
  if (text == "positive") return source::Polarity::kPositive;
  if (text == "negative") return source::Polarity::kNegative;
  return std::nullopt;
}

}  // namespace

void AddPointOptions(CLI::App& options, CLI::Option* centroid, convert::Selection& selection) {
  convert::PointChoice& points = selection.points;
  options.add_flag("--areas", points.centroids.isArea, "Centroids have areas in place of heights")
      ->needs(centroid)
      ->option_text(" ");
  AddParsed(options, "--mz", points.filter.mz, convert::ParseTimeRange, "a range of m/z such as 100-200.5",
            "Only points of this m/z, such as 100-200.5")
      ->option_text("LO-HI");
  options.add_flag("--drop-zeros", points.filter.dropsZeros, "Only points whose intensity is not 0")
      ->option_text(" ");
  AddParsed(options, "--min-intensity", points.filter.minIntensity, convert::ParseDecimal,
            "a number such as 12.5", "Only points of this intensity or more")
      ->option_text("NUMBER");
  const auto parseCount = [](const std::string& text) {
    const std::optional<int> count = ParseNumber(text);
    return count ? std::optional(static_cast<std::size_t>(*count)) : std::nullopt;
  };
  AddParsed(options, "--top", points.filter.top, parseCount, "a whole number from 1 to 2147483647",
            "Only the N most intense of the points that are left")
      ->option_text("N");
  AddParsed(options, "--polarity", selection.polarity, ParsePolarity, "positive or negative",
            "Only scans of this polarity: positive or negative")
      ->option_text("POLARITY");
}

}  // namespace zrml::tool
