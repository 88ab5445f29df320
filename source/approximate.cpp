#include "math/approximate.h"
