// Terms of the controlled vocabularies used in mzML files: PSI-MS and the unit ontology.
#pragma once

#include <string_view>

namespace zrml::convert {

struct CvTerm {
  std::string_view accession;
  std::string_view name;

  /// The vocabulary of the term.
  constexpr std::string_view Vocabulary() const { return accession.substr(0, accession.find(':')); }
};

namespace cv {

// Units.
inline constexpr CvTerm kMzUnit = {"MS:1000040", "m/z"};
inline constexpr CvTerm kDetectorCounts = {"MS:1000131", "number of detector counts"};
inline constexpr CvTerm kMinute = {"UO:0000031", "minute"};
inline constexpr CvTerm kNanometer = {"UO:0000018", "nanometer"};

// Files and software.
inline constexpr CvTerm kWatersRawFormat = {"MS:1000526", "Waters raw format"};
inline constexpr CvTerm kTextFormat = {"MS:1001369", "text format"};
inline constexpr CvTerm kWatersNativeId = {"MS:1000769", "Waters nativeID format"};
inline constexpr CvTerm kSha1 = {"MS:1000569", "SHA-1"};
inline constexpr CvTerm kCustomSoftware = {"MS:1000799", "custom unreleased software tool"};
inline constexpr CvTerm kMassLynx = {"MS:1000534", "MassLynx"};
inline constexpr CvTerm kProcessing = {"MS:1000543", "data processing action"};
inline constexpr CvTerm kConversionToMzml = {"MS:1000544", "Conversion to mzML"};
inline constexpr CvTerm kPeakPicking = {"MS:1000035", "peak picking"};
inline constexpr CvTerm kDataFiltering = {"MS:1001486", "data filtering"};

// Spectra.
inline constexpr CvTerm kMassSpectrum = {"MS:1000294", "mass spectrum"};
inline constexpr CvTerm kMs1Spectrum = {"MS:1000579", "MS1 spectrum"};
inline constexpr CvTerm kMsnSpectrum = {"MS:1000580", "MSn spectrum"};
inline constexpr CvTerm kPrecursorIonSpectrum = {"MS:1000341", "precursor ion spectrum"};
inline constexpr CvTerm kNeutralLossSpectrum = {"MS:1000326", "constant neutral loss spectrum"};
inline constexpr CvTerm kNeutralGainSpectrum = {"MS:1000325", "constant neutral gain spectrum"};
inline constexpr CvTerm kSimSpectrum = {"MS:1000582", "SIM spectrum"};
inline constexpr CvTerm kSrmSpectrum = {"MS:1000583", "SRM spectrum"};
inline constexpr CvTerm kRadiationSpectrum = {"MS:1000804", "electromagnetic radiation spectrum"};
inline constexpr CvTerm kRepresentation = {"MS:1000525", "spectrum representation"};
inline constexpr CvTerm kCentroid = {"MS:1000127", "centroid spectrum"};
inline constexpr CvTerm kProfile = {"MS:1000128", "profile spectrum"};
inline constexpr CvTerm kMsLevel = {"MS:1000511", "ms level"};
inline constexpr CvTerm kPositiveScan = {"MS:1000130", "positive scan"};
inline constexpr CvTerm kNegativeScan = {"MS:1000129", "negative scan"};
inline constexpr CvTerm kBasePeakMz = {"MS:1000504", "base peak m/z"};
inline constexpr CvTerm kBasePeakIntensity = {"MS:1000505", "base peak intensity"};
inline constexpr CvTerm kTotalIonCurrent = {"MS:1000285", "total ion current"};
inline constexpr CvTerm kLowestMz = {"MS:1000528", "lowest observed m/z"};
inline constexpr CvTerm kHighestMz = {"MS:1000527", "highest observed m/z"};
inline constexpr CvTerm kLowestWavelength = {"MS:1000619", "lowest observed wavelength"};
inline constexpr CvTerm kHighestWavelength = {"MS:1000618", "highest observed wavelength"};
inline constexpr CvTerm kSpectrumTitle = {"MS:1000796", "spectrum title"};
inline constexpr CvTerm kSumOfSpectra = {"MS:1000571", "sum of spectra"};
inline constexpr CvTerm kNoCombination = {"MS:1000795", "no combination"};
inline constexpr CvTerm kScanStartTime = {"MS:1000016", "scan start time"};
inline constexpr CvTerm kPresetScan = {"MS:1000616", "preset scan configuration"};
inline constexpr CvTerm kWindowLow = {"MS:1000501", "scan window lower limit"};
inline constexpr CvTerm kWindowHigh = {"MS:1000500", "scan window upper limit"};
inline constexpr CvTerm kIsolationTarget = {"MS:1000827", "isolation window target m/z"};
inline constexpr CvTerm kSelectedIon = {"MS:1000744", "selected ion m/z"};
inline constexpr CvTerm kDissociation = {"MS:1000044", "dissociation method"};

// Chromatograms.
inline constexpr CvTerm kTicChromatogram = {"MS:1000235", "total ion current chromatogram"};
inline constexpr CvTerm kIonCurrentChromatogram = {"MS:1000810", "ion current chromatogram"};
inline constexpr CvTerm kBasePeakChromatogram = {"MS:1000628", "basepeak chromatogram"};
inline constexpr CvTerm kSimChromatogram = {"MS:1001472", "selected ion monitoring chromatogram"};
inline constexpr CvTerm kSrmChromatogram = {"MS:1001473", "selected reaction monitoring chromatogram"};
inline constexpr CvTerm kAbsorptionChromatogram = {"MS:1000812", "absorption chromatogram"};
inline constexpr CvTerm kPressureChromatogram = {"MS:1003019", "pressure chromatogram"};
inline constexpr CvTerm kFlowChromatogram = {"MS:1003020", "flow rate chromatogram"};

// Arrays.
inline constexpr CvTerm kMzArray = {"MS:1000514", "m/z array"};
inline constexpr CvTerm kIntensityArray = {"MS:1000515", "intensity array"};
inline constexpr CvTerm kTimeArray = {"MS:1000595", "time array"};
inline constexpr CvTerm kWavelengthArray = {"MS:1000617", "wavelength array"};
inline constexpr CvTerm kOtherArray = {"MS:1000786", "non-standard data array"};
inline constexpr CvTerm kSingle = {"MS:1000521", "32-bit float"};
inline constexpr CvTerm kDouble = {"MS:1000523", "64-bit float"};
inline constexpr CvTerm kZlib = {"MS:1000574", "zlib compression"};
inline constexpr CvTerm kNoCompression = {"MS:1000576", "no compression"};

}  // namespace cv
}  // namespace zrml::convert
