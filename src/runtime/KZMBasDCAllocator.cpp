#include <runtime/KZMBasDCAllocator.h>

KZMBasDCAllocator::~KZMBasDCAllocator() = default;
