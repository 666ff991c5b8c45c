// What is plainly meant by lines of a report, and not read as such. Readers pass it over, so whoever has made
// or edited the file learns of it here. docs/openlynx-report.md
#pragma once

#include <string>

#include "common/findings.h"
#include "openlynx/report_stream.h"

namespace zrml::openlynx {

/// Goes through all lines of the file, which is called `name`. Each finding tells how many lines there are of
/// its kind in a sample, and the number of the first, from 1.
void NoticeFaultyLines(ReportStream& stream, const std::string& name, Findings& findings);

}  // namespace zrml::openlynx
