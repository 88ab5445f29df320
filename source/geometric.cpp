#include "math/geometric.h"
