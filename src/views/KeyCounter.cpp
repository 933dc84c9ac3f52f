#include "views/KeyCounter.h"
