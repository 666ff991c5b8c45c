// A source for tests, in a folder that lives as long as it.
#pragma once

#include <fstream>
#include <memory>

#include "source/source.h"
#include "tests/support/raw_directory_builder.h"
#include "tests/support/report_writer.h"
#include "tests/support/temp_directory.h"
#include "tools/zrml/view/answers.h"

namespace zrml::view {

class OpenedSource {
 public:
  explicit OpenedSource(const RawDirectoryBuilder& raw) {
    raw.WriteTo(folder_.Path());
    source_ = source::Source::Open(folder_.Path().string());
  }
  explicit OpenedSource(const ReportLines& report) {
    const std::filesystem::path path = folder_.Path() / "vials.rpt";
    std::ofstream(path, std::ios::binary) << ReportText(report, LineEnd::kCrLf);
    source_ = source::Source::Open(path.string());
  }

  source::Source& operator*() const { return *source_; }
  const TempDirectory& Folder() const { return folder_; }

  /// The answer to a question in its text form.
  Answer Ask(const std::string& question) const { return AnswerTo(*source_, *Question::Parse(question)); }

 private:
  const TempDirectory folder_{"run.raw"};
  std::unique_ptr<source::Source> source_;
};

}  // namespace zrml::view
