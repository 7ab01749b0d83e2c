#pragma once

#include "Subjects.h"

#define tracery tracery_plain
#include "Subjects.h"
#undef tracery
