#pragma once

/**
 * Loading a library by its name at run time: the one place of the plug-in that depends on the platform.
 */
namespace RuntimeLibrary {

/** Loads a library from the load path; null on failure. */
void* load(const char* name);

/** Finds an exported function; null on failure. */
void* resolve(void* library, const char* symbol);

/** Lets go of a loaded library. */
void unload(void* library);

/** The file name of the library with this base name, as the platform spells it. */
#ifdef _WIN32
#define RUNTIME_LIBRARY_NAME(baseName) baseName ".dll"
#else
#define RUNTIME_LIBRARY_NAME(baseName) "lib" baseName ".so"
#endif

} // namespace RuntimeLibrary
