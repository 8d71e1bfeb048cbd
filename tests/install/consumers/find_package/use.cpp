// The same consumer as C++.
#include "../use.c"
