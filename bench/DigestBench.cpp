// How fast are the digests, beside libcrypto's in the same run? Per message: a context started, the
// message fed and finished. Arguments are message bytes: one block, what sealing feeds at a time,
// and a long recording's worth of calls. Read bytes_per_second, as ratios: machines have moods.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <vector>

#include "LarkspurCommon/ShaBlocks.h"
#include "LarkspurCommon/md5.h"
#include "LarkspurCommon/sha1.h"
#include "LarkspurCommon/sha1Compress.h"

#ifdef CORVO_BENCH_LIBCRYPTO
#include <openssl/evp.h>
#endif

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

// What processors without SHA extensions compress with; no padding. For the peer's counterpart run
// with OPENSSL_ia32cap=:~0x20000000 in the environment.
void Sha1PortableBlocks(benchmark::State& state) {
  std::uint32_t words[5] = {};
  Measure(state, [&](const Bytes& message, unsigned char*) {
    Sha1CompressPortable(words, message.data(), message.size() / kShaBlockSize);
    benchmark::DoNotOptimize(words);
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

#ifdef CORVO_BENCH_LIBCRYPTO
// Algorithm and context are kept across messages: looking them up is not the question.
void Libcrypto(benchmark::State& state, const char* algorithm) {
  EVP_MD* const md = EVP_MD_fetch(nullptr, algorithm, nullptr);
  EVP_MD_CTX* const context = EVP_MD_CTX_new();
  if (md == nullptr || context == nullptr) {
    state.SkipWithError("libcrypto lacks it");
  } else {
    Measure(state, [&](const Bytes& message, unsigned char* result) {
      EVP_DigestInit_ex2(context, md, nullptr);
      EVP_DigestUpdate(context, message.data(), message.size());
      EVP_DigestFinal_ex(context, result, nullptr);
    });
  }
  EVP_MD_CTX_free(context);
  EVP_MD_free(md);
}
#endif

void Sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(64)->Arg(8 << 10)->Arg(1 << 20);
}

BENCHMARK(Sha1)->Apply(Sizes);
#ifdef CORVO_BENCH_LIBCRYPTO
BENCHMARK_CAPTURE(Libcrypto, sha1, "SHA1")->Apply(Sizes);
#endif
BENCHMARK(Sha1PortableBlocks)->Apply(Sizes);
BENCHMARK(Md5)->Apply(Sizes);
#ifdef CORVO_BENCH_LIBCRYPTO
BENCHMARK_CAPTURE(Libcrypto, md5, "MD5")->Apply(Sizes);
#endif

}  // namespace

BENCHMARK_MAIN();
