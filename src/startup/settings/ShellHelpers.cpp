#include "startup/settings/ShellHelpers.h"
