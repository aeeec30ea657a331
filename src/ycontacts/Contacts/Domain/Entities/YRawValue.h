#pragma once
// YRawValue: kept at this path for the records' includes; the mapping lives with the platform pieces.

#include "ycontacts/Platform/MarloComponents/YRawValue.h"
