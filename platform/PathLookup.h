#ifndef PLATFORM_PATHLOOKUP_H
#define PLATFORM_PATHLOOKUP_H

// How the library's own file calls find paths on the disk. Not exported: a host that replaces one
// of the calls leaves the others as they are. Every buffer holds MAX_PATH characters.
namespace platform {

// Whether FindFileIgnoreCase, as calls find it, is the library's own and not a host's.
bool FindsFilesItself();

// `path` with '/' for '\', in `out` (which may be `path`). False, with errno set and `out` empty,
// when it is null, empty or doesn't fit.
bool ToUnixPath(char* out, const char* path);

// Gives each component of a Unix path that exists the spelling that it has on disk. Whether the
// whole path exists; errno tells why not.
bool SpellAsOnDisk(char* path);

// `path` spelled as on disk as far as it exists. False, with errno set, as ToUnixPath.
bool LookUpPath(char* out, const char* path);

// `path` as a target to create: only its directory is spelled as on disk. A neighbour that differs
// in case is another file: writing to it would destroy it. False, with errno set, as ToUnixPath.
bool LookUpTarget(char* out, const char* path);

}  // namespace platform

#endif
