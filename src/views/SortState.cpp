#include "views/SortState.h"
