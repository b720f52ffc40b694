#pragma once

#include <utility>

namespace QRNL::SDK::Utility {

namespace detail_unique_ptr {

/** Ends an object in a way that only its maker knows. */
class deleter_impl
{
public:
    virtual ~deleter_impl() = default;
    virtual void dispose() = 0;
};

/** A pointer and the functor that ends what it points to. */
template<class Pointer, class Deleter>
class deleter_impl_pd final : public deleter_impl
{
public:
    deleter_impl_pd(Pointer pointer, Deleter deleter) : m_pointer(pointer), m_deleter(std::move(deleter)) {}

    void dispose() override { m_deleter(m_pointer); }

private:
    Pointer m_pointer;
    Deleter m_deleter;
};

} // namespace detail_unique_ptr

/** An owning pointer whose type does not tell how the object ends. */
template<class T>
class unique_ptr
{
public:
    unique_ptr() = default;
    ~unique_ptr() { reset(); }
    unique_ptr(const unique_ptr&) = delete;
    unique_ptr& operator=(const unique_ptr&) = delete;

    T* get() const { return m_pointer; }
    T* operator->() const { return m_pointer; }
    explicit operator bool() const { return m_pointer != nullptr; }

    /** Lets go of the object: the pointer is null before the object ends. */
    void reset()
    {
        m_pointer = nullptr;
        detail_unique_ptr::deleter_impl* deleter = std::exchange(m_deleter, nullptr);
        if (deleter != nullptr) {
            deleter->dispose();
            delete deleter;
        }
    }

    /** Takes an object over, which @p deleter, called with the pointer, ends. */
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
