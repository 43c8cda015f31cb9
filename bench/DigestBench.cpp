// How fast are the digests, beside libcrypto's? Per message: a context started, the message fed and
// finished. Arguments are message bytes: one block, a copy step, what sealing feeds at a time, and
// a long recording's worth of calls. OPENSSL_ia32cap=:~0x20000000 in the environment takes the SHA
// extensions from libcrypto; Sha1Avx2 and Sha1Portable are this library without them.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "LarkspurCommon/ShaBlocks.h"
#include "LarkspurCommon/md5.h"
#include "LarkspurCommon/sha1.h"
#include "LarkspurCommon/sha1Compress.h"
#include "bench/Libcrypto.h"

namespace {

using Bytes = std::vector<unsigned char>;

// `digest` is called with a message and room for the longest digest.
template <class Digest>
void Measure(benchmark::State& state, Digest digest) {
  Bytes message(static_cast<std::size_t>(state.range(0)), 0x5A);
  unsigned char result[20];
  for (auto _ : state) {
    digest(message, result);
    benchmark::DoNotOptimize(result);
  }
  state.SetBytesProcessed(state.iterations() * state.range(0));
}

void Sha1(benchmark::State& state) {
  Measure(state, [](const Bytes& message, unsigned char* result) {
    SHA1_CTX context;
    SHA1Init(&context);
    SHA1Update(&context, message.data(), static_cast<unsigned>(message.size()));
    SHA1Final(result, &context);
  });
}

void Sha1By(benchmark::State& state,
            void (*compress)(std::uint32_t*, const unsigned char*, std::size_t)) {
  Measure(state, [=](const Bytes& message, unsigned char* result) {
    SHA1_CTX context;
    SHA1Init(&context);
    FeedShaBlocks(context, message.data(), static_cast<unsigned>(message.size()), compress);
    FeedShaPadding(context, compress);
    for (std::size_t i = 0; i < 5; ++i) StoreBe32(result + 4 * i, context.state[i]);
  });
}

void Sha1Avx2(benchmark::State& state) {
  if (!Sha1Avx2Usable()) return state.SkipWithError("no AVX2");
  Sha1By(state, Sha1CompressAvx2);
}

void Sha1Portable(benchmark::State& state) {
  Sha1By(state, Sha1CompressPortable);
}

void Sha1Libcrypto(benchmark::State& state) {
  Measure(state, [](const Bytes& message, unsigned char* result) {
    LibcryptoSha1(message.data(), message.size(), result);
  });
}

void Md5(benchmark::State& state) {
  Measure(state, [](Bytes& message, unsigned char* result) {
    constexpr std::size_t kFileBlock = 16384;  // what the file layer feeds at a time
    MD5_CTX context;
    MD5Init(&context);
    for (std::size_t fed = 0; fed < message.size(); fed += kFileBlock) {
      const std::size_t length = std::min(kFileBlock, message.size() - fed);
      MD5Update(&context, message.data() + fed, static_cast<std::uint16_t>(length));
    }
    MD5Final(result, &context);
  });
}

void Md5Libcrypto(benchmark::State& state) {
  Measure(state, [](const Bytes& message, unsigned char* result) {
    LibcryptoMd5(message.data(), message.size(), result);
  });
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(64)->Arg(1000)->Arg(8192)->Arg(1 << 20);
}

BENCHMARK(Sha1)->Apply(Sizes);
BENCHMARK(Sha1Avx2)->Apply(Sizes);
BENCHMARK(Sha1Portable)->Apply(Sizes);
BENCHMARK(Sha1Libcrypto)->Apply(Sizes);
BENCHMARK(Md5)->Apply(Sizes);
BENCHMARK(Md5Libcrypto)->Apply(Sizes);

}  // namespace

BENCHMARK_MAIN();
