// Tuning of the restoration by kind of blur and width. All values are tuned by eye and uneven on purpose.
#ifndef KELVO_STAGES_PASS_TABLES_H
#define KELVO_STAGES_PASS_TABLES_H

#include <cstdint>

namespace kelvo {

inline constexpr int kWidths = 21;  // 0..20; width 0 does nothing

// Per pass and width. A second pass exists where its divisor is not 0.
struct PassTable {
  int16_t strength[kWidths];    // smoothness against data, in 1/2560
  int16_t gradient[kWidths];    // size of one step, in 64 linear units
  int16_t iterations[kWidths];  // before the trim by Accuracy
  int16_t divisor[kWidths];     // of the step 40000 / divisor / iteration
};

// Per kind of blur.
struct KindTable {
  PassTable passes[2];
  float noise_factor[kWidths];   // one level of RemoveNoise, on the strength
  int16_t noise_floor[kWidths];  // contrast below which the pre-filter smooths, display values >> 5
};

extern const KindTable kRoundTable;
extern const KindTable kMotionTable;

extern const float kWidthFactor[kWidths];  // strength by width

// ShortcutMode of round widths 1..6 (columns) for Accuracy -2..2 (rows).
extern const int16_t kShortcuts[5][6];

}  // namespace kelvo

#endif  // KELVO_STAGES_PASS_TABLES_H
