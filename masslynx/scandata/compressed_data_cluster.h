// The instrument maker's reader of compressed ion-mobility data, class CompressedDataCluster of cdt.dll (off
// Windows: of libcdt.so, where somebody has put a reader with the same class). docs/mobility.md
#pragma once

#include "masslynx/scandata/mobility_cluster.h"

namespace zrml::masslynx {

/// Loads the library and constructs an object of it. Null when there is no library, it lacks an operation or
/// its constructor throws. The library stays loaded as long as the object lives. An operation that throws has
/// failed; on Windows exceptions of the library cannot be caught and pass to the host.
std::unique_ptr<MobilityCluster> OpenCompressedDataCluster(const std::string& path, int function);

}  // namespace zrml::masslynx
