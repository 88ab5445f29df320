// Type lists of the explicit instantiations. Each family writes its list of classes and free
// function templates once, beside its declarations, and expands it twice: `extern` at the end of
// its header, definitions at the end of its source file.
#pragma once

#define MGEO_REAL_TYPES(X) X(float) X(double)
#define MGEO_REAL_AND_INT_TYPES(X) X(float) X(double) X(int)
