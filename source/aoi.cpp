#include "math/aoi.h"
