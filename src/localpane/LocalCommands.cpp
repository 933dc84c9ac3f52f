#include "localpane/LocalCommands.h"
