#pragma once

#include <memory>
#include <utility>

/// A value that may be absent and that its holder owns: copying the holder copies the value.
/// For records that contain records of their own kind.
template <typename Value>
class OwnedValue
{
public:
    OwnedValue() = default;
    // cppcheck-suppress noExplicitConstructor // it stands for the value
    OwnedValue(Value value)
        : m_value(std::make_unique<Value>(std::move(value)))
    {
    }
    OwnedValue(const OwnedValue &other)
        : m_value(other.m_value ? std::make_unique<Value>(*other.m_value) : nullptr)
    {
    }
    OwnedValue(OwnedValue &&) noexcept = default;
    OwnedValue &operator=(OwnedValue other) noexcept
    {
        m_value = std::move(other.m_value);
        return *this;
    }
    ~OwnedValue() = default;

    explicit operator bool() const { return m_value != nullptr; }
    const Value &operator*() const { return *m_value; }
    const Value *operator->() const { return m_value.get(); }
    Value &operator*() { return *m_value; }
    Value *operator->() { return m_value.get(); }

    friend bool operator==(const OwnedValue &left, const OwnedValue &right)
    {
        if (!left || !right)
            return !left && !right;
        return *left == *right;
    }
    friend bool operator!=(const OwnedValue &left, const OwnedValue &right)
    {
        return !(left == right);
    }

private:
    std::unique_ptr<Value> m_value;
};
