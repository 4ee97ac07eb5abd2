#include "base64.hpp"

#include <benchmark/benchmark.h>

#include <vector>

#ifdef OXR_HAVE_OPENSSL
#include <openssl/evp.h>
#endif

#include "core/base64.hpp"

// Base64 between bytes and UTF-16: the loops alone, and the exported members, which allocate the result. OpenSSL does
// the same bytes from and to text of one byte a character.
namespace {

using oxr::core::base64Length;

std::vector<unsigned char> bytesOf(const benchmark::State& state) {
  std::vector<unsigned char> bytes(static_cast<std::size_t>(state.range(0)));
  for (std::size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<unsigned char>(i * 2654435761u >> 13);
  return bytes;
}

// The text of the bytes; with line ends as mail has them where the second argument is the length of a line.
std::vector<unsigned short> textOf(const benchmark::State& state, std::size_t lineLength = 0) {
  const auto bytes = bytesOf(state);
  std::vector<unsigned short> text(base64Length(bytes.size()));
  oxr::core::encodeBase64(bytes, text.data());
  for (std::size_t end = lineLength; end != 0 && end < text.size(); end += lineLength + 2)
    text.insert(text.begin() + static_cast<std::ptrdiff_t>(end), {'\r', '\n'});
  return text;
}

void setRate(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void encodeCore(benchmark::State& state) {
  const auto bytes = bytesOf(state);
  std::vector<unsigned short> text(base64Length(bytes.size()));
  for (auto _ : state) {
    oxr::core::encodeBase64(bytes, text.data());
    benchmark::ClobberMemory();
  }
  setRate(state);
}
BENCHMARK(encodeCore)->Name("Base64 encode/core (bytes)")->Arg(48)->Arg(65536);

void encodeMember(benchmark::State& state) {
  const auto bytes = bytesOf(state);
  for (auto _ : state) {
    KelWstring text;
    CPBase64Converter::binToBase64(bytes.data(), static_cast<int>(bytes.size()), text);
    benchmark::DoNotOptimize(text.characters());
  }
  setRate(state);
}
BENCHMARK(encodeMember)->Name("Base64 encode/binToBase64 (bytes)")->Arg(48)->Arg(65536);

void decodeCore(benchmark::State& state) {
  const auto text = textOf(state, static_cast<std::size_t>(state.range(1)));
  std::vector<unsigned char> bytes(text.size() * 3 / 4);
  for (auto _ : state) {
    oxr::core::decodeBase64({text.data(), text.size()}, bytes);
    benchmark::ClobberMemory();
  }
  setRate(state);
}
BENCHMARK(decodeCore)->Name("Base64 decode/core (bytes, line)")->Args({48, 0})->Args({65536, 0})->Args({65536, 76});

void decodeMember(benchmark::State& state) {
  const auto text = textOf(state);
  for (auto _ : state) {
    const PWFData value = CPBase64Converter::binFromBase64(text.data(), static_cast<int>(text.size()));
    benchmark::DoNotOptimize(value.getDataValue());
  }
  setRate(state);
}
BENCHMARK(decodeMember)->Name("Base64 decode/binFromBase64 (bytes)")->Arg(48)->Arg(65536);

#ifdef OXR_HAVE_OPENSSL
void encodeOpenSsl(benchmark::State& state) {
  const auto bytes = bytesOf(state);
  std::vector<unsigned char> text(base64Length(bytes.size()) + 1);
  for (auto _ : state) {
    EVP_EncodeBlock(text.data(), bytes.data(), static_cast<int>(bytes.size()));
    benchmark::ClobberMemory();
  }
  setRate(state);
}
BENCHMARK(encodeOpenSsl)->Name("Base64 encode/EVP_EncodeBlock (bytes)")->Arg(48)->Arg(65536);

void decodeOpenSsl(benchmark::State& state) {
  const auto units = textOf(state);
  const std::vector<unsigned char> text(units.begin(), units.end());
  std::vector<unsigned char> bytes(text.size());
  for (auto _ : state) {
    EVP_DecodeBlock(bytes.data(), text.data(), static_cast<int>(text.size()));
    benchmark::ClobberMemory();
  }
  setRate(state);
}
BENCHMARK(decodeOpenSsl)->Name("Base64 decode/EVP_DecodeBlock (bytes)")->Arg(48)->Arg(65536);
#endif

}  // namespace
