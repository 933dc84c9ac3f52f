#include "localpane/Upload.h"
