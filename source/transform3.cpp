#include "math/transform3.h"
