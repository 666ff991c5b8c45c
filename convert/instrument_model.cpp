#include "convert/instrument_model.h"

#include <algorithm>
#include <array>
#include <string>

#include "common/text.h"

namespace zrml::convert {
namespace {

constexpr CvTerm kAnyModel = {"MS:1000126", "Waters instrument model"};

constexpr std::array<CvTerm, 46> kModels = {{
    {"MS:1000150", "Auto Spec Ultima NT"},
    {"MS:1000159", "GCT"},
    {"MS:1000164", "IsoPrime"},
    {"MS:1000165", "IsoProbe"},
    {"MS:1000166", "IsoProbe T"},
    {"MS:1000170", "M@LDI L"},
    {"MS:1000171", "M@LDI LR"},
    {"MS:1000180", "NG-5400"},
    {"MS:1000184", "Platform ICP"},
    {"MS:1000188", "Q-Tof micro"},
    {"MS:1000189", "Q-Tof Ultima"},
    {"MS:1000191", "quattro micro"},
    {"MS:1000192", "Quattro Ultima"},
    {"MS:1000632", "Q-Tof Premier"},
    {"MS:1001770", "GCT Premier"},
    {"MS:1001771", "MALDI Synapt G2 HDMS"},
    {"MS:1001772", "MALDI Synapt G2 MS"},
    {"MS:1001773", "MALDI Synapt G2-S HDMS"},
    {"MS:1001774", "MALDI Synapt G2-S MS"},
    {"MS:1001775", "MALDI Synapt HDMS"},
    {"MS:1001776", "MALDI Synapt MS"},
    {"MS:1001777", "Synapt G2 HDMS"},
    {"MS:1001778", "Synapt G2 MS"},
    {"MS:1001779", "Synapt G2-S HDMS"},
    {"MS:1001780", "Synapt G2-S MS"},
    {"MS:1001781", "Synapt HDMS"},
    {"MS:1001782", "Synapt MS"},
    {"MS:1001783", "Xevo G2 Q-Tof"},
    {"MS:1001784", "Xevo G2 Tof"},
    {"MS:1001785", "Xevo Q-Tof"},
    {"MS:1001787", "Acquity SQD"},
    {"MS:1001788", "Acquity TQD"},
    {"MS:1001789", "Quattro micro GC"},
    {"MS:1001790", "Xevo TQ MS"},
    {"MS:1001791", "Xevo TQD"},
    {"MS:1001792", "Xevo TQ-S"},
    {"MS:1002274", "SQ Detector 2"},
    {"MS:1002275", "Xevo G2-S Tof"},
    {"MS:1002276", "Xevo G2-S QTof"},
    {"MS:1002277", "AutoSpec Premier"},
    {"MS:1002726", "SYNAPT G2-Si"},
    {"MS:1002727", "MALDI SYNAPT G2-Si"},
    {"MS:1002728", "Vion IMS QTof"},
    {"MS:1002729", "Xevo G2 XS Tof"},
    {"MS:1002730", "Xevo TQ-XS"},
    {"MS:1002731", "Xevo TQ-S micro"},
}};

// Letters and digits only, in lower case. Other characters ('@') are kept.
std::string Bare(std::string_view text) {
  std::string bare = ToLower(text);
  std::erase_if(bare, [](char c) { return c == ' ' || c == '-' || c == '_' || c == '.'; });
  return bare;
}

}  // namespace

const CvTerm& InstrumentModel(std::string_view text) {
  const std::string wanted = Bare(text.substr(0, text.find('#')));
  const auto model = std::find_if(kModels.begin(), kModels.end(),
                                  [&](const CvTerm& term) { return Bare(term.name) == wanted; });
  return model != kModels.end() ? *model : kAnyModel;
}

}  // namespace zrml::convert
