// Names that are given once each.
#pragma once

#include <map>
#include <string>

namespace zrml::tool {

class UniqueNames {
 public:
  /// `name`, or that with the first number behind it that nothing else has.
  std::string Unique(const std::string& name) {
    const auto [known, isNew] = taken_.emplace(name, 1);
    std::string unique = name;
    for (bool isFree = isNew; !isFree; isFree = taken_.emplace(unique, 1).second)
      unique = name + " (" + std::to_string(++known->second) + ")";
    return unique;
  }

 private:
  std::map<std::string, int> taken_;  // and the number that was tried last
};

}  // namespace zrml::tool
