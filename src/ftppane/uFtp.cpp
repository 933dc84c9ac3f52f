#include "ftppane/uFtp.h"
