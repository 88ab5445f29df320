#include "math/matrix_calc.h"
