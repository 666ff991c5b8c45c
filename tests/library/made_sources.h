// Sources for tests that see no header of the product.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

namespace zrml::test {

class MadeSources {
 public:
  MadeSources();
  MadeSources(const MadeSources&) = delete;
  MadeSources& operator=(const MadeSources&) = delete;
  ~MadeSources();

  std::string Acquisition() const;  ///< SmallAcquisition()
  std::filesystem::path AcquisitionPath() const;
  std::string EvenAbsorbance() const;  ///< whose absorbance spectra have the same wavelengths
  std::string CutAcquisition() const;  ///< whose lock mass is gone
  std::string Report() const;          ///< Vials()

 private:
  struct Directories;
  std::unique_ptr<Directories> made_;
};

}  // namespace zrml::test
