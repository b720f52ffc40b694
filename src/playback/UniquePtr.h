#pragma once

#include <utility>

namespace QRNL::SDK::Utility {

namespace detail_unique_ptr {

/** A type-erased deleter with its object. */
class deleter_impl
{
public:
    virtual ~deleter_impl() = default;
    /** Deletes the object. */
    virtual void dispose() = 0;
};

/** A pointer and the functor that deletes its object. */
template<class Pointer, class Deleter>
class deleter_impl_pd final : public deleter_impl
{
public:
    /** @param deleter is called with @p pointer */
    deleter_impl_pd(Pointer pointer, Deleter deleter) : m_pointer(pointer), m_deleter(std::move(deleter)) {}

    void dispose() override { m_deleter(m_pointer); }

private:
    Pointer m_pointer;
    Deleter m_deleter;
};

} // namespace detail_unique_ptr

/** An owning pointer with a type-erased deleter. */
template<class T>
class unique_ptr
{
public:
    unique_ptr() = default;
    ~unique_ptr() { reset(); }
    unique_ptr(const unique_ptr&) = delete;
    unique_ptr& operator=(const unique_ptr&) = delete;

    /** Returns the object; null without one. */
    T* get() const { return m_pointer; }
    /** Accesses the object. */
    T* operator->() const { return m_pointer; }
    /** Returns whether there is an object. */
    explicit operator bool() const { return m_pointer != nullptr; }

    /** Deletes the object; the pointer is null before that. */
    void reset()
    {
        m_pointer = nullptr;
        detail_unique_ptr::deleter_impl* deleter = std::exchange(m_deleter, nullptr);
        if (deleter != nullptr) {
            deleter->dispose();
            delete deleter;
        }
    }

    /** Deletes the object and takes another, which @p deleter, called with the pointer, deletes. */
    template<class Deleter>
    void reset(T* pointer, Deleter deleter)
    {
        reset();
        m_deleter = new detail_unique_ptr::deleter_impl_pd<T*, Deleter>(pointer, std::move(deleter));
        m_pointer = pointer;
    }

private:
    T* m_pointer = nullptr;
    detail_unique_ptr::deleter_impl* m_deleter = nullptr;
};

} // namespace QRNL::SDK::Utility
