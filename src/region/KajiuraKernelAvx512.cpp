#define TIDORA_FILTER_POINTS FilterPointsAvx512
#include "region/KajiuraKernel.h"
