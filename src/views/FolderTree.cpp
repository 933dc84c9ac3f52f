#include "views/FolderTree.h"
