// The functions of a raw directory or a report, and the m/z of the most intense peak of each.
#include <algorithm>
#include <cstdio>
#include <zrml/zrml.hpp>

int main(int argc, char** argv) try {
  const zrml::Source run(argc > 1 ? argv[1] : "run.raw");
  for (const zrml::Function& function : run.functions()) {
    double mz = 0;
    double highest = 0;
    for (const zrml::Scan& scan : function.scans()) {
      const auto peak = std::max_element(scan.intensity().begin(), scan.intensity().end());
      if (peak == scan.intensity().end() || *peak <= highest) continue;
      highest = *peak;
      mz = scan.mz()[static_cast<std::size_t>(peak - scan.intensity().begin())];
    }
    std::printf("%s: %d scans, highest peak at m/z %.4f\n", std::string(function.name()).c_str(),
                function.size(), mz);
  }
} catch (const zrml::Error& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return error.status();
}
