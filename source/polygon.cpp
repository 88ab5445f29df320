#include "math/polygon.h"
