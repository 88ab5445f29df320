#include "math/rect.h"
