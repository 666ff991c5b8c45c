// The interface of a reader of compressed ion-mobility data, which serves one function of a raw directory at
// a time. A block is a scan of the function; a scan of a block is one of its drift bins.
#pragma once

#include <memory>
#include <string>

namespace zrml::masslynx {

class MobilityCluster {
 public:
  virtual ~MobilityCluster() = default;

  /// Switches to another function, a number from 1, of the same directory.
  virtual void Initialise(const std::string& path, int function) = 0;
  virtual bool IsInitialised() = 0;

  // False: the reader has failed and the results are meaningless.
  virtual bool GetNumberOfBlocks(int& blocks) = 0;
  virtual bool GetScansInBlock(int& bins) = 0;
  virtual bool GetMassAxisLength(int& length) = 0;
  /// Raw masses, not calibrated; `axis` has the axis length.
  virtual bool GetMassAxis(float* axis) = 0;
  /// Must be called before GetScan().
  virtual bool LoadDataBlock(int scan) = 0;
  /// The non-zero points of a bin, as positions on the axis and intensities. Both arrays have the axis
  /// length.
  virtual bool GetScan(int scan, int bin, int* indices, float* intensities, int& count) = 0;
  virtual bool GetRT(int scan, int bin, float& seconds) = 0;
};

/// Opens a function, a number from 1, of the raw directory at a narrow path. Null when there is no reader.
using MobilityClusterOpener = std::unique_ptr<MobilityCluster> (*)(const std::string& path, int function);

}  // namespace zrml::masslynx
