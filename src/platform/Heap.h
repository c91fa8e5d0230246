#pragma once

namespace platform {

// The process's heap as the C library keeps it.
class Heap
{
public:
    // Hands the free pages inside the heap back to the system. After work
    // that made and freed a few big temporary blocks (the listing of a big
    // folder), the C library keeps those pages, where the next such blocks
    // landed, as resident as the rows that stayed: a million rows listed
    // cost a fifth more memory than they hold until the next trim.
    static void GiveBackFreePages();
};

} // namespace platform
