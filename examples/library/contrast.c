/* Raises the contrast of the pixels in a buffer: R, G, B, R, G, B, ...
 *
 *     contrast < pixels.rgb > result.rgb        640 x 480 pixels */
#include <stdio.h>
#include <tarvo.h>

enum { kWidth = 640, kHeight = 480, kStride = 3 * kWidth };

static unsigned char pixels[kStride * kHeight];

static tarvo_status raise_contrast(unsigned char* rows, tarvo_error** error) {
    tarvo_picture* picture = NULL;
    tarvo_result* result = NULL;
    tarvo_status status = tarvo_picture_from_rows(rows, kStride, kWidth, kHeight, TARVO_RGB24, &picture, error);
    if (status == TARVO_OK)
        status = tarvo_apply("AdjustContrast(nil, &c808080, 1.6, 1.6, 1.6)", picture, NULL, &result, error);
    if (status == TARVO_OK)
        status = tarvo_picture_to_rows(tarvo_result_value(result)->as.picture, rows, kStride, TARVO_RGB24, error);
    tarvo_result_release(result);
    tarvo_picture_release(picture);
    return status;
}

int main(void) {
    tarvo_error* error = NULL;
    if (fread(pixels, 1, sizeof pixels, stdin) != sizeof pixels) return 2;
    if (raise_contrast(pixels, &error) != TARVO_OK) {
        fprintf(stderr, "contrast: %s\n", tarvo_error_message(error));
        tarvo_error_free(error);
        return 1;
    }
    return fwrite(pixels, 1, sizeof pixels, stdout) == sizeof pixels ? 0 : 2;
}
