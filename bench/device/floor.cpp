#include "bench/device/floor.h"

#include "bench/bare_operations.h"

void floorExecute(ITransaction& transaction)
{
    bareExecute(transaction);
}
