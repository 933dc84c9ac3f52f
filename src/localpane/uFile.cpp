#include "localpane/uFile.h"
