// Chief header of the common layer.
#pragma once

#include "common/MekExceptions.h"
#include "common/MekFormat.h"
#include "common/MekObjects.h"
#include "common/MekSet.h"
#include "common/MekStrings.h"
