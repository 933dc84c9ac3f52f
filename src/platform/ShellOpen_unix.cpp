#include "platform/ShellOpen.h"
