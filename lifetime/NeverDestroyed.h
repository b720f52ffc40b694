#pragma once

/**
 * A static object without a destructor: what is destroyed late at the end of a process still finds it. It
 * lies in static memory, so a leak checker sees what it refers to. @tparam T keeps no heap memory while it is
 * empty: an unloaded library leaves nothing behind then.
 */
template<class T>
union NeverDestroyed {
    template<class... Arguments>
    explicit NeverDestroyed(Arguments&&... arguments) : value(static_cast<Arguments&&>(arguments)...)
    {
    }
    ~NeverDestroyed() {} // NOLINT(modernize-use-equals-default): a defaulted one would be deleted
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;

    T value;
};
