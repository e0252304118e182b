#define TIDORA_FILTER_POINTS FilterPointsAvx2
#include "kajiura/KajiuraKernel.h"
