#include "math/basic_algo.h"
