#include "platform/FileLook.h"
