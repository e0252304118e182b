#define TIDORA_FILTER_POINTS FilterPointsBaseline
#include "region/KajiuraKernel.h"
