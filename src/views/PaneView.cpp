#include "views/PaneView.h"
