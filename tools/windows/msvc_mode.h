// Included first by msvc-check.sh: what a compiler in MSVC's mode misses to read the headers of MinGW and of
// GCC's standard library.
#pragma once

#define __GNUC__ 12
#define __GNUC_MINOR__ 2
#define __GNUC_PATCHLEVEL__ 0
#define __STRICT_ANSI__ 1

#include <_mingw.h>
#undef __MINGW_IMPORT
#define __MINGW_IMPORT extern __declspec(dllimport)

#define __GCC_ATOMIC_TEST_AND_SET_TRUEVAL 1
#define __GCC_ATOMIC_BOOL_LOCK_FREE 2
#define __GCC_ATOMIC_CHAR_LOCK_FREE 2
#define __GCC_ATOMIC_CHAR16_T_LOCK_FREE 2
#define __GCC_ATOMIC_CHAR32_T_LOCK_FREE 2
#define __GCC_ATOMIC_WCHAR_T_LOCK_FREE 2
#define __GCC_ATOMIC_SHORT_LOCK_FREE 2
#define __GCC_ATOMIC_INT_LOCK_FREE 2
#define __GCC_ATOMIC_LONG_LOCK_FREE 2
#define __GCC_ATOMIC_LLONG_LOCK_FREE 2
#define __GCC_ATOMIC_POINTER_LOCK_FREE 2

#ifdef __cplusplus
// An extension of Microsoft's library that Qt's headers use.
namespace stdext {

template<class Iterator>
Iterator make_unchecked_array_iterator(Iterator iterator)
{
    return iterator;
}

template<class Iterator>
Iterator make_checked_array_iterator(Iterator iterator, decltype(sizeof(0)), decltype(sizeof(0)) = 0)
{
    return iterator;
}

} // namespace stdext
#endif
