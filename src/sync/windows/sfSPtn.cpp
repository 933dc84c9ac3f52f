#include "sync/windows/sfSPtn.h"
