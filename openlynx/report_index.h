// Where things are in a report: samples, the functions of a sample, the spectra and chromatograms of a
// function. Each level is searched when needed, and only positions are kept.
//
// A block that is never closed contains all later ones, so blocks can be nested thousands deep, and the
// content of the innermost belongs to all. Functions therefore hold runs of lists that their sample owns, and
// nested functions are searched together.
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

/// Number of a text of the sample; 0 is the empty text.
using TextNumber = std::size_t;
inline constexpr TextNumber kUnreadText = static_cast<TextNumber>(-1);

/// Whether something has been searched for, and found.
enum class Sought { kNotYet, kInVain, kFound };

/// A "[FUNCTION]" line of a sample. Its number, which never changes, is its place from 1 among all of the
/// sample's functions, including analog ones and those without spectra.
struct Function {
  std::uint64_t position = 0;  // of the line
  std::uint64_t group = 0;     // of the first function that may contain this one
  bool isAnalog = false;
  Sought blocks = Sought::kNotYet;  // of either kind
  // Until its blocks have been searched for: what a search of another function has found.
  Run spectra = {};
  Run chromatograms = {};

  // The function's own keys, once requested.
  TextNumber description = kUnreadText;
  TextNumber type = kUnreadText;
  TextNumber ionMode = kUnreadText;
  bool isTypeHidden = false;  // by zeros, or the end of the file; for careful readers

  bool HasBlocks() const { return spectra.Size() > 0 || chromatograms.Size() > 0; }
};

struct Sample {
  std::uint64_t position = 0;  // of the "[SAMPLE]" line
  bool areFunctionsSought = false;
  std::uint64_t end = 0;  // where the search for functions ended
  std::vector<Function> functions;

  std::vector<std::uint64_t> spectra;        // the "[SPECTRUM]" lines of functions
  std::vector<std::uint64_t> chromatograms;  // the "[CHROMATOGRAM]" lines of functions
  std::vector<std::string> texts;            // values of keys of functions

  /// The text of a number that has been read.
  std::string_view Text(TextNumber number) const;
  std::span<const std::uint64_t> SpectraOf(const Function& function) const;
  std::span<const std::uint64_t> ChromatogramsOf(const Function& function) const;

  /// The functions that may be nested in this one or contain it, including itself.
  std::span<Function> GroupOf(const Function& function);

  /// Forgets what the file says at the positions requested so far.
  void ForgetTexts();
};

/// Every "[SAMPLE]" line of the report, even inside blocks. With a collector, also reports samples whose
/// blocks are still open where the next sample begins or the file, `name`, ends.
std::vector<Sample> FindSamples(ReportStream& stream, const std::string& name = {},
                                Findings* findings = nullptr);

/// Finds the sample's functions and replaces the known ones; analog functions are recognised by name.
void FindFunctions(ReportStream& stream, Sample& sample);

/// Finds the function's blocks unless already done; within a group, analog functions are searched separately
/// from the others.
void FindBlocks(ReportStream& stream, Sample& sample, Function& function);

/// The same for all analog functions of the sample, or for all others.
void FindAllBlocks(ReportStream& stream, Sample& sample, bool areAnalog);

/// Finds the blocks of all functions of the sample again. A block inside several functions counts only for
/// the innermost one, so no two functions share a block.
void FindOwnBlocks(ReportStream& stream, Sample& sample);

/// Reads "Description" and "Type" of the function, or its "IonMode", unless already done.
void ReadNames(ReportStream& stream, Sample& sample, const Function& function);
void ReadIonMode(ReportStream& stream, Sample& sample, const Function& function);

}  // namespace zrml::openlynx
