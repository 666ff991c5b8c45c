// Where things are in a report: samples, the functions of a sample, the spectra and chromatograms of a
// function. Each level is looked for when it is needed, and only positions are kept.
//
// A block that is never closed has all those behind it inside, so blocks can be nested thousands deep, and
// what is in the innermost one is in all of them. So functions hold runs of lists that their sample holds,
// and functions that are nested are looked through together.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/findings.h"
#include "openlynx/report_stream.h"

namespace zrml::openlynx {

/// Items [first, last) of a list of the sample.
struct Run {
  std::size_t first = 0;
  std::size_t last = 0;

  std::size_t Size() const { return last - first; }
};

/// Number of a text of the sample: 0 is the empty one.
using TextNumber = std::size_t;
inline constexpr TextNumber kUnreadText = static_cast<TextNumber>(-1);

/// Whether something has been looked for, and found.
enum class Sought { kNotYet, kInVain, kFound };

/// A "[FUNCTION]" line of a sample. Its number, which never changes, is its place among all of the sample's
/// functions, those without spectra and analog ones included, from 1.
struct Function {
  std::uint64_t position = 0;  // of the line
  std::uint64_t group = 0;     // of the first function that this one may be nested in
  bool isAnalog = false;
  Sought blocks = Sought::kNotYet;  // of either kind
  // Until the blocks have been sought, what was found when another function was looked through.
  Run spectra = {};
  Run chromatograms = {};

  // The function's own keys, once they have been asked for.
  TextNumber description = kUnreadText;
  TextNumber type = kUnreadText;
  TextNumber ionMode = kUnreadText;

  bool HasBlocks() const { return spectra.Size() > 0 || chromatograms.Size() > 0; }
};

struct Sample {
  std::uint64_t position = 0;  // of the "[SAMPLE]" line
  bool areFunctionsSought = false;
  std::uint64_t end = 0;  // how far the functions were looked for
  std::vector<Function> functions;

  std::vector<std::uint64_t> spectra;        // the "[SPECTRUM]" lines of functions
  std::vector<std::uint64_t> chromatograms;  // the "[CHROMATOGRAM]" lines of functions
  std::vector<std::string> texts;            // values of keys of functions

  /// Of a number that has been read.
  std::string_view Text(TextNumber number) const;
  std::span<const std::uint64_t> SpectraOf(const Function& function) const;
  std::span<const std::uint64_t> ChromatogramsOf(const Function& function) const;

  /// The functions that may be nested in this one, or this one in them; itself is among them.
  std::span<Function> GroupOf(const Function& function);

  /// Forgets what the file says at the positions that have been asked for.
  void ForgetTexts();
};

/// Every "[SAMPLE]" line of the report, inside blocks too. With a collector the samples' blocks are looked
/// through as well: for those that are still open where the next sample begins or the file, `name`, ends.
std::vector<Sample> FindSamples(ReportStream& stream, const std::string& name = {},
                                Findings* findings = nullptr);

/// Finds the sample's functions, in place of those that are known; analog ones are known by their names.
void FindFunctions(ReportStream& stream, Sample& sample);

/// Finds the function's blocks unless that has been done; of functions in one group, analog ones are looked
/// through apart from the others.
void FindBlocks(ReportStream& stream, Sample& sample, Function& function);

/// The same for all functions of the sample that are analog, or that are not.
void FindAllBlocks(ReportStream& stream, Sample& sample, bool areAnalog);

/// Finds the blocks of all functions of the sample anew. A block that is inside several functions counts for
/// the innermost one alone, so that each function has its own blocks, and no two share one.
void FindOwnBlocks(ReportStream& stream, Sample& sample);

/// Reads "Description" and "Type" of the function, or its "IonMode", unless that has been done.
void ReadNames(ReportStream& stream, Sample& sample, const Function& function);
void ReadIonMode(ReportStream& stream, Sample& sample, const Function& function);

}  // namespace zrml::openlynx
