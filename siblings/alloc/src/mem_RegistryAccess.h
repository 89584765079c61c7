#pragma once

// Start and stop of the name registry.
struct mem_RegistryAccess {
    static void Open();
    static void Close();
};
