#include "tools/zrml/ion_options.h"

#include <algorithm>

#include "convert/selection.h"
#include "tools/zrml/command.h"

namespace zrml::tool {
namespace {

using convert::ParseDecimal;

std::optional<double> ParseMass(std::string_view text) {
  const std::optional<double> mz = ParseDecimal(text);
  return mz && *mz > 0 ? mz : std::nullopt;
}

std::optional<std::vector<double>> ParseMasses(std::string_view text) {
  std::vector<double> masses;
  for (std::size_t comma = 0; comma != text.npos; text.remove_prefix(comma == text.npos ? 0 : comma + 1)) {
    comma = text.find(',');
    const std::optional<double> mz = ParseMass(text.substr(0, comma));
    if (!mz) return std::nullopt;
    masses.push_back(*mz);
  }
  return masses;
}

CLI::Option* AddTolerance(CLI::App& options, const std::string& option, bool isPpm, Tolerance& tolerance,
                          const std::string& description) {
  const auto parse = [isPpm](const std::string& text) -> std::optional<Tolerance> {
    const std::optional<double> width = ParseDecimal(text);
    return width ? std::optional(Tolerance{*width, isPpm}) : std::nullopt;
  };
  return AddParsed(options, option, tolerance, parse, "a number such as 10 or 0.02", description)
      ->option_text("WIDTH");
}

}  // namespace

source::Range ParseDecimalRange(const std::string& option, std::string_view text,
                                const std::string& example) {
  const std::string wrong = "\"" + std::string(text) + "\" ";
  const std::size_t dash = std::min(text.find('-'), text.size());
  const std::optional<double> low = ParseDecimal(text.substr(0, dash));
  const std::optional<double> high = ParseDecimal(text.substr(std::min(dash + 1, text.size())));
  if (!low || !high) throw CLI::ValidationError(option, wrong + "is not " + example);
  if (*low > *high) throw CLI::ValidationError(option, wrong + "has its larger number first");
  return {*low, *high};
}

std::vector<CLI::Option*> AddToleranceOptions(CLI::App& options, Tolerance& tolerance,
                                              const std::string& more) {
  CLI::Option* const ppm =
      AddTolerance(options, "--ppm", true, tolerance,
                   "How far a range reaches to either side, in parts per million" + more);
  CLI::Option* const da = AddTolerance(options, "--da", false, tolerance, "The same in m/z")->excludes(ppm);
  return {ppm, da};
}

CLI::Option* AddMass(CLI::App& options, const std::string& option, double& mz,
                     const std::string& description) {
  return AddParsed(options, option, mz, ParseMass, "an m/z such as 556.2771", description)->option_text("MZ");
}

std::vector<CLI::Option*> AddIonOptions(CLI::App& options, IonOptions& ions) {
  CLI::Option* const mz =
      AddParsed(options, "--mz", ions.masses, ParseMasses, "a list of m/z such as 556.2771,195.0877",
                "Chromatograms of these ions, such as 556.2771,195.0877");
  mz->option_text("LIST");
  CLI::Option* const targets = options.add_option(
      "--targets", ions.list, "Chromatograms of the ions in a file: TSV under a line of names, or JSON");
  targets->option_text("FILE")->check(IsNotEmpty())->excludes(mz);
  return {mz, targets};
}

std::vector<Target> TargetsOf(const IonOptions& ions) {
  if (!ions.list.empty()) return ReadTargets(ions.list, ions.tolerance);
  std::vector<Target> targets;
  for (const double mz : ions.masses) targets.push_back({mz, RangeAround(mz, ions.tolerance), {}, {}});
  return targets;
}

}  // namespace zrml::tool
