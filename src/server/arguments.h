#pragma once

// Arguments and results of automation calls: between the VARIANTs of a caller and the types that the services use.
//
// Text is single-byte in the ANSI code page inside the services: an incoming BSTR counts up to its first U+0000, and
// characters outside the code page become "?". The string of direct I/O is exempt and stays UTF-16, zeros included.

#include <cstdint>
#include <optional>
#include <string>

#include "platform/automation.h"

namespace marbex::server {

// One argument of a call, by the type that the method declares. Read takes it from the caller's VARIANT, by value or by
// reference: S_OK, DISP_E_TYPEMISMATCH or DISP_E_OVERFLOW. WriteBack stores what the method left in an in/out argument,
// where the caller passed it by reference; a by-value argument in its place keeps nothing.
template <typename Parameter>
class Argument;

// What arguments that are only read have in common.
class InArgument {
public:
    void WriteBack(VARIANT&) const {}
};

// long: any integer width, real, VARIANT_BOOL and numeric text.
template <>
class Argument<int32_t> : public InArgument {
public:
    HRESULT Read(const VARIANT& source);
    int32_t Pass() const { return value_; }

private:
    int32_t value_ = 0;
};

// BOOL: as long; anything but zero is true.
template <>
class Argument<bool> : public InArgument {
public:
    HRESULT Read(const VARIANT& source);
    bool Pass() const { return value_; }

private:
    bool value_ = false;
};

// string, in the ANSI code page: text, or a number as text.
template <>
class Argument<const std::string&> : public InArgument {
public:
    HRESULT Read(const VARIANT& source);
    const std::string& Pass() const { return value_; }

private:
    std::string value_;
};

// The string of direct I/O.
template <>
class Argument<const std::u16string&> : public InArgument {
public:
    HRESULT Read(const VARIANT& source);
    const std::u16string& Pass() const { return value_; }

private:
    std::u16string value_;
};

// dispatch: held for the duration of the call. A null pointer is passed on as null.
template <>
class Argument<IDispatch*> : public InArgument {
public:
    HRESULT Read(const VARIANT& source);
    IDispatch* Pass() const { return value_.Value().pdispVal; }

private:
    platform::VariantHolder value_;
};

// long*; a reference to nothing is passed on as null.
template <>
class Argument<int32_t*> {
public:
    HRESULT Read(const VARIANT& source);
    int32_t* Pass() { return isNull_ ? nullptr : &value_; }
    void WriteBack(VARIANT& destination) const;

private:
    bool isNull_ = false;
    int32_t before_ = 0;
    int32_t value_ = 0;
};

// string*; text that the method leaves alone is not written back, so that the code page takes nothing from it.
template <>
class Argument<std::string*> {
public:
    HRESULT Read(const VARIANT& source);
    std::string* Pass() { return &value_; }
    void WriteBack(VARIANT& destination) const;

private:
    std::string before_;
    std::string value_;
};

// The string* of direct I/O; a reference to nothing is passed on as null.
template <>
class Argument<std::u16string*> {
public:
    HRESULT Read(const VARIANT& source);
    std::u16string* Pass() { return isNull_ ? nullptr : &value_; }
    void WriteBack(VARIANT& destination) const;

private:
    bool isNull_ = false;
    std::u16string before_;
    std::u16string value_;
};

// Stores a result in a VARIANT that holds nothing yet; a text of none is a null BSTR. E_OUTOFMEMORY when it cannot.
HRESULT PutResult(int32_t result, VARIANT& destination);
HRESULT PutResult(const std::optional<std::string>& result, VARIANT& destination);

}  // namespace marbex::server
