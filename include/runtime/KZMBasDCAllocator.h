#pragma once
#include <alloc/KZMBasAllocator.h>

class aio_ostream;

// What code that works with named variables and temporary blocks sees of their keeper; the contract
// of each function is that of KZMBasSrmDCAllocator.
class KZM_API KZMBasDCAllocator : public KZMBasAllocator {
public:
    ~KZMBasDCAllocator() override;

    // Variables: blocks of `length` elements of `size` bytes, found by number or by name.
    virtual int registerVariable(unsigned length, int size, const char* name) = 0;
    virtual int findVariable(const char* name) const = 0;
    virtual void* getVariable(int index) = 0;
    virtual const void* constGetVariable(int index) const = 0;
    virtual const char* getName(int index) const = 0;
    virtual void freeVariable(int& index) = 0;
    virtual void freeAllVariables() = 0;

    // Temporary blocks, which have no name and go back by their address.
    virtual void* allocTempData(int bytes) = 0;
    virtual double* allocTempDouble(int count) = 0;
    virtual int* allocTempInt(int count) = 0;
    virtual void freeTempData(void* block) = 0;
    virtual void freeTempData(int* block) = 0;
    virtual void freeTempData(double* block) = 0;

    // Reports the variables, a line each.
    virtual void dumpVariables(aio_ostream& os) const = 0;

protected:
    KZMBasDCAllocator() = default;
};
