#include "shell/app_setup.h"

void RegisterParamsForms() {}
