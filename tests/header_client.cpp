#include "header_client.c"  // the same text, as C++
