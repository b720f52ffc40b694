#pragma once

/**
 * A static object that is never destroyed, so that objects destroyed late at the end of a process can use it.
 * It is in static memory, so a leak checker sees what it refers to.
 *
 * @tparam T has no heap memory while it is empty, so that an unloaded library leaks nothing
 */
template<class T>
union NeverDestroyed {
    /** Makes the object of the arguments of its constructor. */
    template<class... Arguments>
    explicit NeverDestroyed(Arguments&&... arguments) : value(static_cast<Arguments&&>(arguments)...)
    {
    }
    ~NeverDestroyed() {} // NOLINT(modernize-use-equals-default): a defaulted one would be deleted
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    T value; ///< The object.
};
