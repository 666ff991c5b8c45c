// Options that choose scans of a source, and whether what they name is there.
#pragma once

#include <span>
#include <string>

#include <CLI/CLI.hpp>

#include "convert/selection.h"
#include "source/source.h"
#include "tools/zrml/command.h"

namespace zrml::tool {

/// An option for a list of numbers such as 1,3-5.
template <class Numbers>
CLI::Option* AddNumberSet(CLI::App& options, const std::string& option, Numbers& numbers,
                          const std::string& description) {
  return AddParsed(options, option, numbers, convert::NumberSet::Parse, "a list of numbers such as 1,3-5",
                   description)
      ->option_text("LIST");
}

/// --function, --ms-level and --rt.
void AddSelectionOptions(CLI::App& options, convert::Selection& selection);

/// Whether its scans are mass spectra of a level, which those of absorbance and of ion monitoring are not.
bool HasLevel(const source::Function& function);

/// By its number and its level. One without a level is not in a list of levels.
bool Chooses(const convert::Selection& selection, const source::Function& function);

/// Throws a Failure, wrong usage: there is no function of mass spectra `ofLevel` ("of level 1").
[[noreturn]] void RefuseWithoutLevel(source::Source& source, int sample, const std::string& ofLevel);

enum class AbsorbanceFunction { kCounts, kIsNotMeant };

/// Throws a Failure, wrong usage, for a function that is named, not in a range, and in none of the samples.
void RequireFunctions(source::Source& source, std::span<const int> samples,
                      const convert::FunctionSet& wanted, AbsorbanceFunction absorbance);

}  // namespace zrml::tool
