#include "views/RowList.h"
