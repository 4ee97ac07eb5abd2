#include "base64.hpp"
#include "bytebffr.hpp"
#include "cpalloc.hpp"
#include "fuzz/allocation/operations.hpp"
#include "growingbytebuffer.hpp"
#include "textbffr.hpp"

namespace oxr::test {
namespace {

constexpr char kBytes[] = "some bytes, some more bytes, and many more bytes";
constexpr int kSize = sizeof kBytes - 1;

std::string bytesIn(const oxr::GrowingByteBuffer& buffer) {
  return toldBytes(buffer.getData(0), std::min(buffer.getLength(), 60)) + " " + told(buffer.getLength());
}

struct Row {
  const char* name;
  void (*change)(oxr::GrowingByteBuffer&);
};
const Row kGrowing[] = {
    {"appendBytes", [](oxr::GrowingByteBuffer& b) { b.appendBytes(kBytes, kSize); }},
    {"insertBytesAt", [](oxr::GrowingByteBuffer& b) { b.insertBytesAt(kBytes, kSize, 3); }},
    {"writeBytesAt", [](oxr::GrowingByteBuffer& b) { b.writeBytesAt(kBytes, kSize, 700); }},
    {"setLength", [](oxr::GrowingByteBuffer& b) { b.setLength(2000); }},
    {"reserveForAppend", [](oxr::GrowingByteBuffer& b) { b.reserveForAppend(2000)[0] = 'x', b.commitAppend(1); }},
    {"getBuffer", [](oxr::GrowingByteBuffer& b) { b.getBuffer()->lockOffset(3); }},
    {"setLength, bad", [](oxr::GrowingByteBuffer& b) { b.setLength(-1); }},
};

// Windows of a message: what a spawn has locked must be free again where it fails.
struct Windows {
  Windows() { bytes.create(kBytes, kSize); }
  ReadOnlyByteBuffer bytes;
  KelBuffer host{kBytes, kSize};
  BitstreamBufferReader hostBytes{&host};
  SpawnableTextBufferReader reader{&hostBytes, 819, eEndianBig, nullptr};
};

}  // namespace

Operations bufferOperations() {
  Operations operations;
  for (const Row& row : kGrowing)
    operations.push_back({row.name, [row]() -> Call {
                            return [row] {
                              std::unique_ptr<oxr::GrowingByteBuffer> buffer;
                              {
                                const Unfailing unfailing;
                                buffer = std::make_unique<oxr::GrowingByteBuffer>(0);
                                buffer->setLength(250);
                              }
                              return changedOrKept([&] { return bytesIn(*buffer); }, [&] { row.change(*buffer); });
                            };
                          }});
  addBoth(
      operations, "spawnTextBufferReader", [] { return std::make_shared<Windows>(); },
      [](Windows& windows) {
        windows.reader.setOffsetChars(3);
        const auto look = [&] { return told(windows.host.isLocked(3)) + told(windows.reader.getLength()); };
        const std::string text = changedOrKept(look, [&] { windows.reader.spawnTextBufferReader(20); });
        windows.reader.unspawnTextBufferReader();
        return text + look();
      });
  addBoth(
      operations, "spawnTextBufferReader, too far", [] { return std::make_shared<Windows>(); },
      [](Windows& windows) { return windows.reader.spawnTextBufferReader(1000), told("spawned"); });
  addBoth(
      operations, "lockCurrentOffset", [] { return std::make_shared<Windows>(); },
      [](Windows& windows) {
        windows.reader.lockCurrentOffset();
        const std::string text = told(windows.host.isLocked(0));
        windows.reader.unlockCurrentOffset();
        return text;
      });
  operations.push_back({"ReadOnlyByteBuffer::getBuffer", []() -> Call {
                          return [] {
                            ReadOnlyByteBuffer bytes;
                            bytes.create(kBytes, kSize);
                            return told(bytes.getBuffer()->size(false) + bytes.getBuffer()->size(true));
                          };
                        }});
  operations.push_back({"binToBase64", []() -> Call {
                          return [] {
                            KelBufferedWstring<16u> text;
                            CPBase64Converter::binToBase64(reinterpret_cast<const unsigned char*>(kBytes), kSize, text);
                            return told(static_cast<const KelWstring&>(text));
                          };
                        }});
  for (const bool isWhole : {true, false})
    operations.push_back({isWhole ? "binFromBase64" : "binFromBase64, bad", [isWhole]() -> Call {
                            return [isWhole] {
                              constexpr unsigned short kText[] = {'Z', 'm', '9', 'v', 'Y', 'g', '=', '='};
                              return told(CPBase64Converter::binFromBase64(kText, isWhole ? 8 : 5));
                            };
                          }});
  operations.push_back({"cpMalloc", []() -> Call {
                          return [] {
                            void* const block = cpMalloc(100);
                            if (block == nullptr) throw std::bad_alloc();  // as its callers have to
                            void* const larger = cpRealloc(block, 1000);
                            cpFree(larger != nullptr ? larger : block);
                            if (larger == nullptr) throw std::bad_alloc();
                            return told("had");
                          };
                        }});
  return operations;
}

}  // namespace oxr::test
