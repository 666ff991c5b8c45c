// Shared by the provider's tests: a provider, and reports for it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "plugin/report_server.h"
#include "tests/support/report_writer.h"
#include "tests/support/temp_directory.h"

namespace zrml {

using Doubles = HostVector<double>;

inline ReportLines MsFunction(const ReportLines& blocks) {
  return FunctionBlock(Keys({{"Description", "survey"}, {"Type", "MS"}, {"IonMode", "ES+"}}) + blocks);
}

inline ReportLines AnalogFunction(const ReportLines& blocks) {
  return FunctionBlock(Keys({{"Description", "ANALOG"}, {"Type", "-"}}) + blocks);
}

inline ReportLines OneSpectrum() { return SpectrumBlock(Keys({{"Time", "1.5"}}), {{100, 50}}); }
inline ReportLines OneTrace() { return ChromatogramBlock({}, {{1, 2}}); }

/// A provider with its own report.
class ReportTest : public testing::Test {
 protected:
  std::wstring Write(const std::string& text, const std::string& name = "report.rpt") {
    directory_.WriteText(name, text);
    return directory_.WidePath(name);
  }

  void Open(const std::string& text) {
    server_.Close();
    ASSERT_TRUE(server_.Open(Write(text)));
  }
  void Open(const ReportLines& report) { Open(ReportText(report)); }

  /// Opens a report of one function with one spectrum block.
  void OpenSpectrum(const ReportLines& spectrum) { Open(SampleBlock(MsFunction(spectrum))); }

  CZRMassSpectrum Spectrum(int scan = 0, int function = 0, int sample = 0) {
    CZRMassSpectrum spectrum;
    EXPECT_TRUE(server_.GetSpectrum(sample, function, scan, spectrum));
    return spectrum;
  }

  std::wstring Metadata(const std::wstring& key, int sample = 0, int function = 0) {
    std::wstring value = L"old";
    return server_.GetMetadataValue(sample, function, key, value) ? value : L"?";
  }

  TempDirectory directory_{"reports"};
  plugin::COpenLynxRptDataServerImpl server_;
};

}  // namespace zrml
