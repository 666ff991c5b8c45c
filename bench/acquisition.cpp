#include "bench/acquisition.h"

#include <map>
#include <memory>
#include <tuple>

#include "masslynx/scandata/point_unit_format.h"

namespace zrml::bench {
namespace {

using masslynx::point_unit_format::PointUnit;
using masslynx::point_unit_format::UnitOf;

// Raw masses from 100 up, in steps that each format can store.
double MassOf(std::uint32_t i, std::uint32_t points) { return 100 + 1900.0 * i / points; }

std::uint32_t Word(double value) { return static_cast<std::uint32_t>(value); }

// The stored form of a point: formats without masses get intensities only.
void WritePoint(unsigned format, std::uint32_t i, double mass, ByteWriter& out) {
  const std::uint16_t mantissa = static_cast<std::uint16_t>(i * 2654435761u >> 20);
  switch (format) {
    case 0:
      out.U32(Word(mass * 128) << 11 | (mantissa & 0xFFu) << 3 | 1);
      return;
    case 8:
      out.U16(mantissa).U32(Word(mass * 128) << 4 | 1);
      return;
    case 9: {  // 2^exponent x a fraction of 23 bits
      const std::uint32_t exponent = mass < 1024 ? 10 : 11;
      out.U16(mantissa).U32(Word(mass / (1u << exponent) * 8388608) << 9 | exponent << 4 | 1);
      return;
    }
    case 12:
    case 13:  // 2^11 x a fraction of 27 bits
      out.U32(0x100000u | mantissa | 12u << 22).U32(11u << 27 | Word(mass / 2048 * 134217728));
      if (format == 13) out.U32(0);
      return;
    case 11:
    case 14:
      out.U32(0x100000u | mantissa | 12u << 22);
      if (format == 14) out.U32(0).U32(0);
      return;
    default:
      out.U16(static_cast<std::uint16_t>(mantissa << 3 | 1));
  }
}

void WritePair(std::uint32_t i, std::uint32_t points, ByteWriter& out) {
  const std::uint32_t first = Word(MassOf(i, points) * 1024);
  const std::uint32_t second = Word(MassOf(i + 1, points) * 1024);
  out.U16(9).U16(17).U32((first & 0xFFFFFF) | second << 24).U16(static_cast<std::uint16_t>(second >> 8));
}

FileBytes ScanData(const LayoutData& layout) {
  ByteWriter out;
  const PointUnit unit = UnitOf(static_cast<int>(layout.dataFormat));
  for (std::uint32_t i = 0; i < layout.points; i += static_cast<std::uint32_t>(unit.points)) {
    if (layout.dataFormat == 1) {
      WritePair(i, layout.points, out);
    } else if (unit.bytes == 10) {
      for (int k = 0; k < 4; ++k) out.U16(static_cast<std::uint16_t>(i + static_cast<std::uint32_t>(k)));
      out.U16(0x3210);
    } else {
      WritePoint(layout.dataFormat, i, MassOf(i, layout.points), out);
    }
  }
  return out.Take();
}

TempDirectory Make(const LayoutData& layout) {
  RawDirectoryBuilder raw;
  if (layout.isCalibrated) raw.header.push_back("$$ Cal MS1 Static: 0.001,0.9999,1e-6,-1e-9,1e-12,T1");
  FunctionFiles function;
  function.record.type = 18;
  function.record.dataFormat = layout.dataFormat;
  for (std::size_t i = 0; i < 32; ++i) {
    function.record.startMasses[i] = static_cast<float>(100 + i);
    function.record.endMasses[i] = static_cast<float>(2000 + i);
  }
  ScanFiles scan;
  scan.data = ScanData(layout);
  scan.index.pointCount = layout.points;
  for (int i = 0; i < layout.scans; ++i) {
    scan.index.retentionTime = static_cast<float>(i) / 60;
    function.scans.push_back(scan);
  }
  raw.functions.push_back(std::move(function));
  return raw.Build();
}

}  // namespace

std::size_t ScanBytes(const LayoutData& layout) {
  const PointUnit unit = UnitOf(static_cast<int>(layout.dataFormat));
  return static_cast<std::size_t>(unit.BytesOf(layout.points));
}

const TempDirectory& AcquisitionOf(const LayoutData& layout) {
  static std::map<std::tuple<unsigned, std::uint32_t, bool, int>, std::unique_ptr<TempDirectory>> made;
  auto& directory = made[{layout.dataFormat, layout.points, layout.isCalibrated, layout.scans}];
  if (directory == nullptr) directory = std::make_unique<TempDirectory>(Make(layout));
  return *directory;
}

const TempDirectory& ManyScans() {
  static const TempDirectory directory = [] {
    RawDirectoryBuilder raw;
    raw.functions.resize(1);
    TempDirectory made = raw.Build();
    std::vector<ScanIndexRecord> index(kManyScans);
    std::vector<ScanStatisticsRecord> statistics(kManyScans);
    for (std::size_t i = 0; i < index.size(); ++i) {
      index[i].dataOffset = static_cast<std::uint32_t>(i * 60);
      index[i].pointCount = 10;
      index[i].totalIntensity = static_cast<float>(i % 1000);
      index[i].retentionTime = static_cast<float>(static_cast<double>(i) / 6000);
      statistics[i].precursorMass = 500;
    }
    made.Write("_FUNC001.IDX", WriteScanIndex(index));
    made.Write("_FUNC001.STS", WriteScanStatistics(statistics));
    return made;
  }();
  return directory;
}

}  // namespace zrml::bench
