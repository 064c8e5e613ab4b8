#include "shell/app_setup.h"

void RegisterPlantForms() {}
