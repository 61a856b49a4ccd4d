/* The header is C99, and all of it can be named from C. */
#include "tarvo.h"

int use_header_from_c(void);

static int never(void* context) { return context != NULL; }

int use_header_from_c(void) {
    const tarvo_call_options options = {.size = sizeof options, .yield = never, .threads = 1};
    const unsigned char rows[] = {1, 2, 3, 4, 5, 6};
    const tarvo_argument arguments[] = {{NULL, {TARVO_INTEGER, {7}}}, {"height", {TARVO_INTEGER, {9}}}};
    tarvo_picture* picture = NULL;
    tarvo_result* result = NULL;
    tarvo_error* error = NULL;
    tarvo_value self = {TARVO_PICTURE, {0}};
    int fine;
    if (tarvo_picture_from_rows(rows, 6, 2, 1, TARVO_RGB24, &picture, &error) != TARVO_OK) return 0;
    self.as.picture = picture;
    fine = tarvo_call("TRV_Stretch", &self, arguments, 2, &options, &result, &error) == TARVO_OK &&
           tarvo_picture_height(tarvo_result_value(result)->as.picture) == 9;
    tarvo_result_release(result);
    tarvo_picture_release(picture);
    return fine && error == NULL;
}
