#include "math/tools.h"
