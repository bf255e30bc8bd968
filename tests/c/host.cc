// The same host as C++11, which is how hosts whose standard library is another one, or of another version,
// meet it.
#include "host.c"
