/// @class VornSupport::VornSmartPointer
/// Intrusive smart pointer for the counted classes.
///
/// Holds one reference to an object with addRef and release. A smart pointer
/// is not synchronised itself: one smart pointer must not be assigned by two
/// threads at once, while different smart pointers to one object may be used
/// freely. Smart pointers carry no order: operator< answers false for every
/// pair, so an ordered container treats all of them as one key.
#ifndef VSUPT_VORNSMARTPOINTER_H
#define VSUPT_VORNSMARTPOINTER_H

namespace VornSupport {

template <class T>
class VornSmartPointer {
public:
    VornSmartPointer() : m_pObject(nullptr) {}

    /// Holds object, adding a reference unless it is null.
    VornSmartPointer(T* object) : m_pObject(object)
    {
        if (m_pObject != nullptr) {
            m_pObject->addRef();
        }
    }

    /// Holds the other's object, with a reference of its own.
    VornSmartPointer(const VornSmartPointer& other) : VornSmartPointer(other.m_pObject) {}

    ~VornSmartPointer()
    {
        if (m_pObject != nullptr) {
            m_pObject->release();
        }
    }

    /// Releases the old object and holds the other's; nothing when both hold the same.
    VornSmartPointer& operator=(const VornSmartPointer& other)
    {
        if (this != &other) {
            replace(other.m_pObject);
        }
        return *this;
    }

    /// Releases the old object and holds this one; nothing when it is the same.
    VornSmartPointer& operator=(T* object)
    {
        replace(object);
        return *this;
    }

    /// The object, without a test for null.
    T* operator->() { return m_pObject; }
    /// The object, without a test for null.
    const T* operator->() const { return m_pObject; }
    /// The object, without a test for null.
    T& operator*() { return *m_pObject; }
    /// The object, without a test for null.
    const T& operator*() const { return *m_pObject; }
    /// The object, without a test for null.
    operator T*() const { return m_pObject; }

    /// Whether both hold the same object.
    bool operator==(const VornSmartPointer& other) const { return m_pObject == other.m_pObject; }
    /// Always false: smart pointers carry no order.
    bool operator<(const VornSmartPointer&) const { return false; }

    /// Hands the reference to the caller: the pointer becomes null and no
    /// release is made.
    T* getOwnership()
    {
        T* object = m_pObject;
        m_pObject = nullptr;
        return object;
    }

private:
    void replace(T* object)
    {
        if (object == m_pObject) {
            return;
        }
        if (m_pObject != nullptr) {
            m_pObject->release();
        }
        m_pObject = object;
        if (m_pObject != nullptr) {
            m_pObject->addRef();
        }
    }

    T* m_pObject;
};

}  // namespace VornSupport

#endif
