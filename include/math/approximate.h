// Best-fit geometric elements and their fit-quality records.
#pragma once

#include <math/detail/instantiate.h>
