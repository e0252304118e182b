#define TIDORA_FILTER_POINTS FilterPointsAvx2
#include "region/KajiuraKernel.h"
