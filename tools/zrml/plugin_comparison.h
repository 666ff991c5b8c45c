// What a plug-in says of a source, slot by slot, beside what the source holds.
#pragma once

#include "source/source.h"
#include "tools/zrml/plugin_library.h"
#include "tools/zrml/plugin_verdicts.h"

namespace zrml::tool {

/// Opens the source's path with the first provider of the plug-in that takes it, and asks every slot.
PluginComparison ComparePlugin(const PluginLibrary& plugin, source::Source& source);

}  // namespace zrml::tool
