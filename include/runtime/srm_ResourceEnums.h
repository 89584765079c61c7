#pragma once

// A memory resource: the number of its pool in KZMBasSrmAllocator<N>, 0 to 64. What each number
// stands for is decided, and named, by the application's memory-resource manager.
enum srm_ResourceEnums : int {
    srm_FirstResource = 0,
    srm_LastResource = 64,
};
// How many resources there are.
constexpr int srm_ResourceCount = srm_LastResource + 1;
