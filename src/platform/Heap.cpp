#include "platform/Heap.h"

#include <malloc.h>

namespace platform {

void Heap::GiveBackFreePages()
{
    malloc_trim(0);
}

} // namespace platform
