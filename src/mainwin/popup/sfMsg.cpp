#include "mainwin/popup/sfMsg.h"
