// The instrument maker's reader of compressed ion-mobility data, class CompressedDataCluster of cdt.dll
// (outside Windows: of libcdt.so, if a reader with the same class is installed). docs/mobility.md
#pragma once

#include "masslynx/scandata/mobility_cluster.h"

namespace zrml::masslynx {

/// Loads the library and constructs an object of its class. Null when there is no library, it lacks an
/// operation or the constructor throws. The library stays loaded as long as the object lives. An operation
/// that throws has failed; on Windows the library's exceptions cannot be caught and reach the host.
std::unique_ptr<MobilityCluster> OpenCompressedDataCluster(const std::string& path, int function);

}  // namespace zrml::masslynx
