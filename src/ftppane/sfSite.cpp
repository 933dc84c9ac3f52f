#include "ftppane/sfSite.h"
