// What a raw directory says about its sample, by the keys of the interface.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zrml::masslynx {

enum class MetadataOrigin { kHeader, kDateTime, kFolder, kProvider, kIonMode };

struct MetadataItem {
  std::wstring_view key;
  MetadataOrigin origin;
  std::string_view headerKey = {};
};

/// In the order of the interface.
std::span<const MetadataItem> MetadataItems();

inline constexpr std::wstring_view kProviderName = L"ZRMLProvider";

/// An item of the header, including date and time; empty for other items and where there is no such line.
std::wstring HeaderMetadata(const MetadataItem& item, const std::vector<std::string_view>& headerLines);

}  // namespace zrml::masslynx
