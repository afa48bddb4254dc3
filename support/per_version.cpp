#include "ara/per/per_version.h"

#include <iostream>

void get_version() { std::cout << "00.06.02" << std::endl; }
