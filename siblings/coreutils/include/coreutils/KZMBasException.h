#pragma once
#include <coreutils/KZMBasStringMode.h>
#include <coreutils/atr_String.h>
#include <kzm_export.h>

// Base of the exceptions of the product. They are raised with Throw, never with a throw expression
// at the site, so that a handler sees the exact class however the object was held. The order of the
// virtual operations is relied on by other libraries.
class KZM_API KZMBasException {
public:
    virtual ~KZMBasException();

    // For the log: the text, the code and where it was thrown.
    virtual atr_String DeveloperReport(KZMBasStringMode mode) const;

    virtual atr_String UserReport(KZMBasStringMode mode) const;  // the text alone

    // The text, the throw by exact class, a copy for another thread, and the number by which logs
    // know the class.
    virtual atr_String AsString(KZMBasStringMode mode) const = 0;
    virtual void Propagate() const = 0;          // throws a copy of *this by its exact class
    virtual KZMBasException* Clone() const = 0;  // the caller deletes it
    virtual int GetCode() const = 0;

    // Records the throw site and raises the object. `file` is kept as a pointer: pass a literal.
    [[noreturn]] void Throw(const char* file, int line);

    // Where Throw was called; line 0 before.
    const char* ThrownFile() const { return m_file; }  // "" before Throw
    int ThrownLine() const { return m_line; }

protected:
    KZMBasException() = default;
    KZMBasException(const KZMBasException&) = default;
    KZMBasException& operator=(const KZMBasException&) = default;

private:
    const char* m_file = "";
    int m_line = 0;
};
