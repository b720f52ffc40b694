#pragma once

/**
 * Loading a library by its name at run time. No other source of the plug-in has code of its own for each
 * platform; the headers of the contract, in platform/, also differ in the type DWORD and in export macros.
 */
namespace RuntimeLibrary {

/** Loads a library from the load path; null on failure. */
void* load(const char* name);

/** Finds an exported function; null on failure. */
void* resolve(void* library, const char* symbol);

/** Unloads a library that load returned. */
void unload(void* library);

/**
 * @def RUNTIME_LIBRARY_NAME
 * The file name of the library with this base name on this platform.
 */
#ifdef _WIN32
#define RUNTIME_LIBRARY_NAME(baseName) baseName ".dll"
#else
#define RUNTIME_LIBRARY_NAME(baseName) "lib" baseName ".so"
#endif

} // namespace RuntimeLibrary
