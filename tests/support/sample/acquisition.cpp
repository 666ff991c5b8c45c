#include "tests/support/sample/acquisition.h"

#include <algorithm>

#include "tests/support/sample/functions.h"
#include "tests/support/sample/instrument.h"
#include "tests/support/sample/portable_math.h"

namespace zrml::sample {
namespace {

// Texts are Windows-1252, as acquisition computers write them ("\xB0\x43" are degrees Celsius).
std::vector<std::string> Header() {
  const std::vector<double> calibration(kCalibration.begin(), kCalibration.end());
  return {
      HeaderLine("Version", "01.00"),
      HeaderLine("Acquired Name", "sample"),
      HeaderLine("Acquired Date", "14-Nov-2026"),
      HeaderLine("Acquired Time", "09:15:00"),
      HeaderLine("Job Code", "demonstration"),
      HeaderLine("Task Code", ""),
      HeaderLine("User Name", "Ren\xE9 Exemple"),
      HeaderLine("Laboratory Name", "Simulated laboratory"),
      HeaderLine("Instrument", "QTOF-SIM"),
      HeaderLine("Conditions", "0.4 mL/min, 45 \xB0\x43"),
      HeaderLine("Submitter", "Ren\xE9 Exemple"),
      HeaderLine("SampleID", "MIX-10"),
      HeaderLine("Bottle Number", "1:A,1"),
      HeaderLine("Sample Description", "Ten compounds, 5 \xB5g/mL, simulated"),
      HeaderLine("MS Method", "survey and fragments.exp"),
      HeaderLine("Inlet Method", "gradient 10 min"),
      CalLine("Function 1", calibration, Domain::kRoot),
      CalLine("Function 2", calibration, Domain::kRoot),
      CalLine("Function 3", calibration, Domain::kRoot),
  };
}

std::vector<std::string> Labels() {
  return {
      "Parameters for the simulated acquisition",
      CreatorLine("4.1"),
      "",
      "Source Temperature (\xB0\x43)\t120",
      "Desolvation Temperature (\xB0\x43)\t450",
      "",
      FunctionHeading(1, ""),
      "Scan Time (sec)\t0.45",
      FunctionHeading(2, ""),
      "Set Mass\t391.2843",
      FunctionHeading(3, "REFERENCE"),
      "Scan Time (sec)\t0.45",
      FunctionHeading(4, ""),
      "Range (nm)\t210 - 400",
      FunctionHeading(5, ""),
      "Channels\t3",
  };
}

// Percentage of the organic solvent: held, raised, held, and back to the start.
double Gradient(double minutes) {
  if (minutes < 0.5) return 5;
  if (minutes < 8) return 5 + (minutes - 0.5) * 12;
  return minutes < 9 ? 95 : 5;
}

// Mixtures half-way are the most viscous.
double Pressure(double percent) {
  const double distance = (percent - 40) / 60;
  return 6200 - 1900 * distance * distance;
}

std::vector<AnalogRecord> AnalogTraces() {
  constexpr int kPointsPerMinute = 30;
  Noise noise(0x5EED0006);
  std::vector<AnalogRecord> records;
  for (int i = 0; i <= static_cast<int>(kRunMinutes) * kPointsPerMinute; ++i) {
    const double minutes = static_cast<double>(i) / kPointsPerMinute;
    const double percent = Gradient(minutes);
    records.push_back({.time = static_cast<float>(minutes),
                       .words = {NearestIntensityWord(Pressure(percent) + 6 * noise.Normal()),
                                 NearestIntensityWord(percent)}});
  }
  return records;
}

}  // namespace

RawDirectoryBuilder Acquisition() {
  RawDirectoryBuilder raw;
  raw.header = Header();
  raw.labels = Labels();
  raw.functions = {Survey(), FragmentSpectra(), LockMass(), DiodeArray(), IonRecording()};
  raw.analogNames = {"System Pressure", "%B"};
  raw.analogs = AnalogTraces();
  return raw;
}

}  // namespace zrml::sample
