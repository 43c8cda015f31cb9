#ifndef PLATFORM_EXPORT_H
#define PLATFORM_EXPORT_H

/* Marks what the shared library exports; everything else is hidden. A host process that exports a
   function of the same name (linked with -rdynamic) runs its own, also for the library's calls. */
#define CORVO_API __attribute__((visibility("default")))

/* Marks what an exported class keeps to itself. */
#define CORVO_LOCAL __attribute__((visibility("hidden")))

#endif
