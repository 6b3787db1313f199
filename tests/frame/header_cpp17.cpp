#include "header_c99.c"
