#include "views/NameEditor.h"
