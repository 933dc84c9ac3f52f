#include "ftppane/Download.h"
