// Options that name ions and how wide their m/z ranges are.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

#include "tools/zrml/targets.h"

namespace zrml::tool {

/// "100-200.5". Throws a CLI::ValidationError of `option`; `example` says what is expected of its argument.
source::Range ParseDecimalRange(const std::string& option, std::string_view text, const std::string& example);

/// --ppm and --da, which exclude each other. The description of each ends with `more`.
std::vector<CLI::Option*> AddToleranceOptions(CLI::App& options, Tolerance& tolerance,
                                              const std::string& more);

/// An option for an m/z, which is above 0.
CLI::Option* AddMass(CLI::App& options, const std::string& option, double& mz,
                     const std::string& description);

struct IonOptions {
  std::vector<double> masses = {};
  std::string list = {};  ///< path of a list of targets
  Tolerance tolerance = {};

  bool IsEmpty() const { return masses.empty() && list.empty(); }
};

/// --mz and --targets, which exclude each other.
std::vector<CLI::Option*> AddIonOptions(CLI::App& options, IonOptions& ions);

/// The named masses, or the targets of the list. Throws a Failure, as ReadTargets does.
std::vector<Target> TargetsOf(const IonOptions& ions);

}  // namespace zrml::tool
