#include "math/transform2.h"
