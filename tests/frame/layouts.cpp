// The layouts as callers in C++ see them.
#include "layouts.h"
