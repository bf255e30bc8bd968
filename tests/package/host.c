/* A host in C: the events of three seconds of video, of which the last two are black. */
#include <zel/zel_c.h>

#include <stdio.h>
#include <string.h>

enum { kWidth = 640, kHeight = 360, kRate = 25 };

static void onCleared(void* user, const zelc_event* event) {
    zelc_kind kind = ZELC_INIT(zelc_kind);
    zelc_kind_info(event->kind, &kind);
    printf("%s from %.2f to %.2f s\n", kind.name, event->start_s, event->end_s);
    *(int*)user += strcmp(kind.name, "black") == 0;
}

int main(void) {
    static uint8_t luma[kWidth * kHeight];
    static uint8_t chroma[kWidth * kHeight / 4];
    int black = 0;
    zelc_analyser* analyser = NULL;
    zelc_frame frame = ZELC_INIT(zelc_frame);
    zelc_analyser_options options = ZELC_INIT(zelc_analyser_options);
    zelc_analyser_callbacks callbacks = ZELC_INIT(zelc_analyser_callbacks);
    zelc_silence_log(); /* standard output is ours */
    callbacks.user = &black;
    callbacks.on_cleared = &onCleared;
    zelc_analyser_options_default(&options);
    options.has_audio = 0;
    if (zelc_analyser_new(&options, &callbacks, &analyser) != ZELC_OK) {
        fprintf(stderr, "%s\n", zelc_last_error());
        return 1;
    }
    frame.width = kWidth;
    frame.height = kHeight;
    frame.data[0] = luma;
    frame.data[1] = frame.data[2] = chroma;
    frame.stride[0] = kWidth;
    frame.stride[1] = frame.stride[2] = kWidth / 2;
    memset(chroma, 128, sizeof chroma);
    for (int i = 0; i < 3 * kRate; ++i) {
        for (int j = 0; j < kWidth * kHeight; ++j) {
            luma[j] = (uint8_t)(i < kRate ? (j + 3 * i) % 200 + 20 : 16);
        }
        if (zelc_analyser_video(analyser, &frame, (double)i / kRate, 1.0 / kRate) != ZELC_OK) {
            fprintf(stderr, "%s\n", zelc_last_error());
        }
    }
    zelc_analyser_end(analyser, -1.0); /* clears what is open */
    zelc_analyser_free(analyser);
    return black == 1 ? 0 : 1;
}
