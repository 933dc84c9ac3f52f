#include "mainwin/popup/pfFtp.h"
