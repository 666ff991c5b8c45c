// A report of three samples.
#pragma once

#include <string>

#include "tests/support/report_writer.h"

namespace zrml::test {

// Sample 1 has two functions and an analog one, sample 2 only an analog one, sample 3 is empty.
inline ReportLines Vials() {
  const auto scan = [](const char* time, const ReportPairs& points) {
    return SpectrumBlock(Keys({{"Time", time}, {"BPI", "200"}, {"TIC", "7"}, {"Continuum", "FALSE"}}),
                         points);
  };
  const auto trace = [](const char* name) {
    return ChromatogramBlock(Keys({{"Description", name}, {"MaxIntensity", "50"}}), {{1, 100}, {2, 0}});
  };
  const ReportLines survey =
      FunctionBlock(Keys({{"Description", "survey"}, {"Type", "MS"}, {"IonMode", "ES-"}}) +
                    scan("0.5", {{300, 50}, {100, 100}}) + scan("1.5", {{200, 25}}) + scan("2.5", {}) +
                    trace("TIC") + ChromatogramBlock({}, {}));
  const ReportLines targets =
      FunctionBlock(Keys({{"Type", "SIM"}, {"Note", std::string(100, 'n')}}) + trace("caffeine"));
  const ReportLines pressure =
      FunctionBlock(Keys({{"Description", "ANALOG"}}) + trace("Pressure") + trace("Temperature"));
  return SampleBlock(Keys({{"FileName", "VIAL_1"},
                           {"UserName", "someone"},
                           {"Date", "1-Jan-2026"},
                           {"Time", "9:00"}}) +
                     survey + pressure + targets) +
         SampleBlock(pressure) + SampleBlock({});
}

}  // namespace zrml::test
