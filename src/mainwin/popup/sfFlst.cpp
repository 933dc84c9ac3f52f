#include "mainwin/popup/sfFlst.h"
