// Compares a plug-in's answers about a source, slot by slot, with what the source holds.
#pragma once

#include "source/source.h"
#include "tools/zrml/plugin_library.h"
#include "tools/zrml/plugin_verdicts.h"

namespace zrml::tool {

/// Opens the source's path with the first provider of the plug-in that accepts it, and calls every slot.
PluginComparison ComparePlugin(const PluginLibrary& plugin, source::Source& source);

}  // namespace zrml::tool
