#include "math/solver_le.h"
