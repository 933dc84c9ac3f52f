#include "views/RemoteEntries.h"
