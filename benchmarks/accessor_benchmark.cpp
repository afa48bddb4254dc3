// Accessors beside the bare stream that an application would use without them.
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <ios>
#include <memory>
#include <string>

#include "ara/per/file_proxy_accessor_factory.h"
#include "benchmarks/items.h"
#include "benchmarks/row.h"
#include "benchmarks/turns.h"

namespace ara::per::bench {
namespace {

using OpenMode = BasicOperations::OpenMode;

constexpr long kBlockSize = 64 << 10;
constexpr std::size_t kSlices = 16;
constexpr std::size_t kBlocksOfSlice = 64;
constexpr std::size_t kBlocks = kSlices * kBlocksOfSlice;
constexpr double kGoal = 1.15;

std::string MakeBlock() { return std::string(kBlockSize, 'x'); }

/// A file that is there in full before both ways go through it.
class FullFile : public TemporaryFile {
 public:
  explicit FullFile(const std::string& path) : TemporaryFile(path) {
    std::ofstream file(path, std::ios_base::binary);
    for (std::size_t i = 0; i < kBlocks; ++i) {
      file << MakeBlock();
    }
  }
};

// The same operations on both; the ones of a block give whether all of it was moved.

void Rewind(ReadWriteAccessor& file) { file.seek(std::streampos(0)); }
void Rewind(std::fstream& file) { file.seekg(0); }

bool Write(ReadWriteAccessor& file, std::string& block) {
  return file.write(block.data(), block.size()) == kBlockSize;
}

bool Write(std::fstream& file, std::string& block) {
  return file.write(block.data(), kBlockSize).good();
}

bool Read(ReadWriteAccessor& file, std::string& block) {
  return file.read(block.data(), block.size()) == kBlockSize;
}

bool Read(std::fstream& file, std::string& block) {
  return file.read(block.data(), kBlockSize).good();
}

/// @param move  reads or writes a block
template <class Move>
void CompareBlocks(benchmark::State& state, const char* what, Move&& move) {
  const FullFile ourFile("accessor.bin");
  const FullFile theirFile("stream.bin");
  Compare(state, what, kBlocks, kGoal, [&](const Turn& turn) {
    const std::unique_ptr<ReadWriteAccessor> accessor =
        CreateFileAccessorFactory(".")->CreateRWAccess(
            ourFile.path(), OpenMode::in | OpenMode::out | OpenMode::binary);
    std::fstream stream(theirFile.path(),
                        std::ios_base::in | std::ios_base::out | std::ios_base::binary);
    std::string block = MakeBlock();
    const auto slice = [&](auto& file) {
      return [&](std::size_t) {
        bool isMoved = true;
        const double seconds = CpuSeconds([&] {
          for (std::size_t i = 0; i < kBlocksOfSlice; ++i) {
            isMoved &= move(file, block);
          }
        });
        Demand(isMoved, "a block was not moved");
        return seconds;
      };
    };
    const auto run = [&] {
      Rewind(*accessor);
      Rewind(stream);
      return turn.Run(kSlices, slice(*accessor), slice(stream));
    };
    run();  // both files have been gone through once before the times count
    return run();
  });
}

}  // namespace

void BM_WriteBlocks(benchmark::State& state) {
  CompareBlocks(state, "8 write 64 MiB by 64 KiB / std::fstream",
                [](auto& file, std::string& block) { return Write(file, block); });
}

void BM_ReadBlocks(benchmark::State& state) {
  CompareBlocks(state, "8 read 64 MiB by 64 KiB / std::fstream",
                [](auto& file, std::string& block) { return Read(file, block); });
}

}  // namespace ara::per::bench
