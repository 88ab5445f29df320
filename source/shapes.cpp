#include "math/shapes.h"
