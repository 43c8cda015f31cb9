#ifndef TOOLS_CORVO_TRUST_MANIFEST_H
#define TOOLS_CORVO_TRUST_MANIFEST_H

#include <string>
#include <vector>

namespace corvo {

// A manifest lists the files below a directory with their SHA-256 digests, one a line and in
// bytewise order, as sha256sum writes and checks them. A comment behind them gives their number,
// so that a manifest can't lose lines unnoticed, and the SHA-256 of the manifest before it, so that
// each vouches for all earlier ones.

struct ManifestEntry {
  std::string digest;  // 64 lower-case hexadecimal digits
  std::string name;    // "./" and the path below the directory, any bytes
};

struct Manifest {
  std::vector<ManifestEntry> entries;
  std::string previous;  // the digest of the manifest before it; empty for a first one

  bool Lists(const std::string& name) const;
};

// With their newlines.
std::string ManifestLine(const ManifestEntry& entry);
std::string ManifestTrailer(unsigned long long files, const std::string& previous);

// Throws InputError for what isn't a complete manifest: one that was cut short, has other lines,
// names out of order, or names that lead out of the directory.
Manifest ReadManifest(const std::string& path);

}  // namespace corvo

#endif
