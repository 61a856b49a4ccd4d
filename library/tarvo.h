#ifndef TARVO_H
#define TARVO_H

/* Tarvo Graphics for C: pictures, and the operations on them.
 *
 *     tarvo_picture* photo;
 *     tarvo_result* result;
 *     if (tarvo_picture_open("photo.jpg", NULL, &photo, NULL) == TARVO_OK &&
 *         tarvo_apply("AdjustContrast(nil, &c808080, 1.6, 1.6, 1.6)", photo, NULL, &result, NULL) == TARVO_OK)
 *         tarvo_picture_save(tarvo_result_value(result)->as.picture, "out.png", NULL, NULL);
 *
 * Rules that hold everywhere:
 *
 * Errors. A function that can fail returns a tarvo_status and takes a tarvo_error** as its last argument, which may be
 * NULL. It is set on failure only, and then to an error that the caller frees. Nothing about an error is kept anywhere
 * else. What a function would have given is NULL or 0 after a failure.
 *
 * Misuse. NULL where it is not allowed, unknown names, wrong types, rows that are too short and sizes past the limits
 * give a status, never a crash. That memory is as large as it is said to be is up to the caller.
 *
 * Ownership. What a function gives through `picture`, `object`, `result`, `bytes` or `error` belongs to the caller, who
 * ends it with the _release or _free that belongs to it. What is asked of a picture, a result or an error (pixels,
 * values, texts) belongs to that, and lives as long.
 *
 * Threads. Any function may be called on any thread, at any time, also from a yield. Pictures, results and errors never
 * change and may be shared by threads; only a tarvo_object belongs to one thread at a time. The library starts no
 * thread unless a call's options ask for more than one.
 *
 * Records. Options begin with their size: set it to sizeof the record. A caller compiled with an older header, whose
 * record is smaller, is served as before. NULL stands for the defaults, and so does 0 where nothing else is said.
 *
 * Texts are UTF-8, and end with a zero byte. */

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#define TARVO_API __attribute__((visibility("default")))
#else
#define TARVO_API
#endif

/* Any number is a value of an enumeration, in C++ as in C. */
#ifdef __cplusplus
#define TARVO_INT : int
#else
#define TARVO_INT
#endif

#define TARVO_VERSION_MAJOR 1
#define TARVO_VERSION_MINOR 0
#define TARVO_VERSION_PATCH 0

/* "1.0.0": the version of the library that runs. */
TARVO_API const char* tarvo_version(void);
/* All operations, classes and errors as JSON, as operations.schema.json promises. Lives as long as the library. NULL
 * when there is no memory for it. */
TARVO_API const char* tarvo_description(void);

/* --- errors ------------------------------------------------------------------------------------------------------------- */

typedef enum tarvo_status TARVO_INT {
    TARVO_OK = 0,
    TARVO_OPERATION = 1, /* an operation refused what it was given: the error has its code */
    TARVO_USE = 2,       /* the call is wrong: its name, its arguments, its text, its options */
    TARVO_FILE = 3,      /* a file or an encoded picture cannot be read or written */
    TARVO_LIMIT = 4,     /* a picture would be larger than is possible or allowed */
    TARVO_MEMORY = 5,    /* there is not as much memory, or it is not allowed */
    TARVO_CANCELLED = 6  /* a yield asked for the stop */
} tarvo_status;

typedef struct tarvo_error tarvo_error;

/* Of NULL: TARVO_OK, 0, and "". */
TARVO_API tarvo_status tarvo_error_status(const tarvo_error* error);
/* The operation's own code, as docs/errors.md lists them; 0 for none. */
TARVO_API int32_t tarvo_error_code(const tarvo_error* error);
/* What went wrong, for people: all that is known. */
TARVO_API const char* tarvo_error_message(const tarvo_error* error);
/* The operation as it is registered, "TRV_Stretch", and the argument that was wrong, "width"; "" where that is not
 * known. */
TARVO_API const char* tarvo_error_operation(const tarvo_error* error);
TARVO_API const char* tarvo_error_argument(const tarvo_error* error);

/* The message's parts, for programs with words of their own; "" where there is nothing to tell. Why an operation
 * refused, in lines. */
TARVO_API const char* tarvo_error_reason(const tarvo_error* error);
/* What there was no room for: what was asked and what is allowed. */
TARVO_API const char* tarvo_error_refusal(const tarvo_error* error);
/* The file that cannot be read or written. */
TARVO_API const char* tarvo_error_file(const tarvo_error* error);

/* The bounds that pictures may come up against. */
typedef enum tarvo_limit TARVO_INT {
    TARVO_NO_LIMIT = 0,
    TARVO_MAX_PIXELS = 1, /* max_pixels of the options */
    TARVO_MAX_MEMORY = 2, /* max_memory of the options */
    TARVO_MAX_SIDES = 3   /* TARVO_LONGEST_SIDE, and the most bytes of a picture: no option raises it */
} tarvo_limit;

/* The bound that was in the way. */
TARVO_API tarvo_limit tarvo_error_limit(const tarvo_error* error);

/* What an operation's code means, in words; "" for 0. */
TARVO_API const char* tarvo_code_message(int32_t code);

/* NULL is allowed. */
TARVO_API void tarvo_error_free(tarvo_error* error);

/* --- pictures ----------------------------------------------------------------------------------------------------------- */

/* Never changes, and is counted. Shared freely by threads. */
typedef struct tarvo_picture tarvo_picture;

/* How the bytes of a pixel follow each other in memory, on every machine. A is straight (colours are not multiplied by
 * it): 255 is opaque, 0 is clear. */
typedef enum tarvo_layout TARVO_INT {
    TARVO_GREY8 = 1,  /* one byte */
    TARVO_RGB24 = 2,  /* R, G, B */
    TARVO_RGBA32 = 3, /* R, G, B, A */
    TARVO_XRGB32 = 4  /* x, R, G, B: as pictures are stored; x means nothing */
} tarvo_layout;

/* The longest side of a picture. All pixels together take at most 2^31 - 1 bytes as they are stored. */
#define TARVO_LONGEST_SIDE 32767

/* Copies rows of pixels, the top one first: row y begins `stride` * y bytes behind `pixels`. A negative stride runs
 * upwards in memory. The picture is 32 bits deep. RGBA32 gives it a mask. */
TARVO_API tarvo_status tarvo_picture_from_rows(const void* pixels, ptrdiff_t stride, int32_t width, int32_t height,
                                               tarvo_layout layout, tarvo_picture** picture, tarvo_error** error);
/* Takes the caller's memory as it is, without a copy: TARVO_XRGB32, with a stride of at least 4 * width. It must not
 * change while the picture lives. `release(context)` is called once, when nothing needs the memory any more: on
 * whatever thread that is, also before this returns, and also when this fails. NULL for `release` is allowed: nobody is
 * told. */
TARVO_API tarvo_status tarvo_picture_wrap(const void* xrgb, ptrdiff_t stride, int32_t width, int32_t height,
                                          void (*release)(void* context), void* context, tarvo_picture** picture,
                                          tarvo_error** error);

/* What a call tells besides its result: what is lost, and what is remarkable. None of it is a failure. */
typedef enum tarvo_note TARVO_INT {
    /* Losses. The text is a sentence that begins with the file's name or the operation's. */
    TARVO_NOTE_MASK = 1,     /* the mask, by a format without transparency or by an operation */
    TARVO_NOTE_DEPTH = 2,    /* 16 bits a channel are cut to 8 */
    TARVO_NOTE_COLORS = 3,   /* colours are cut to fewer bits */
    TARVO_NOTE_METADATA = 4, /* what the file told of itself */
    TARVO_NOTE_PROFILE = 5,  /* the colour profile */
    TARVO_NOTE_FILE = 6,     /* owner, links and the like of a file that was replaced */
    TARVO_NOTE_PAGES = 7,    /* further pages, frames or channels of the file */
    TARVO_NOTE_DRAFT = 8,    /* pixels, by decoding at a smaller size; see draft_for */
    /* No losses. */
    TARVO_NOTE_CAUTION = 32,  /* arguments may not mean what their writer thinks: "write 330" */
    TARVO_NOTE_WAITING = 33,  /* the file is a pipe that nobody writes to yet */
    TARVO_NOTE_PIXELS = 34,   /* what the pixels of the file are: "grey, 16 bits a channel, mask" */
    TARVO_NOTE_MESSAGE = 35,  /* an operation shows a message: its text */
    TARVO_NOTE_COMPLAINT = 36 /* an operation wanted what cannot be, and went on */
} tarvo_note;

/* True of a loss. */
#define TARVO_IS_LOSS(note) ((note) < TARVO_NOTE_CAUTION)

/* Bounds, and a stop, for reading a file. */
typedef struct tarvo_read_options {
    size_t size;
    int32_t keep_depth;  /* not 0: black-and-white files give 1 bit, grey and palette files 8; otherwise 32 bits */
    uint64_t max_pixels; /* more are TARVO_LIMIT, however few bytes the file has; 0: TARVO_USUAL_MAX_PIXELS */
    uint64_t max_memory; /* bytes for pictures and decoder; more are TARVO_MEMORY; 0: half of the machine's memory */
    int (*yield)(void* context); /* called every few kilobytes: not 0 stops the work; NULL: nobody is asked */
    void* context;               /* of `yield` and `note` */
    /* Called on the thread of the call, for each thing to tell; the text lives until it returns. NULL: nobody is told.
     */
    void (*note)(void* context, tarvo_note kind, const char* text);
    int32_t srgb; /* not 0: colours become those of sRGB by the file's profile, which the picture then has no more */
    /* The call, as for tarvo_apply, that will be made first on the picture; NULL for none. If all that it does is to
     * make the whole picture smaller, to a size that its text tells in numbers or by fit(...), a JPEG file is decoded
     * in some eighths of its size that are not less: in less time, and with other pixels, which a note says. */
    const char* draft_for;
} tarvo_read_options;

#define TARVO_USUAL_MAX_PIXELS 268435456

/* Reads PNG, JPEG, TIFF, WebP, PBM, PGM, PPM or PAM, told by the content; and of a name that ends with .trv the string
 * that TRV_ConvertToString makes. Transparency becomes the picture's mask.
 *
 * A picture carries what its file was. So do results of operations that are called on it, and it is written as its file
 * was where that loses nothing: a grey picture is a grey file again. */
TARVO_API tarvo_status tarvo_picture_open(const char* path, const tarvo_read_options* options, tarvo_picture** picture,
                                          tarvo_error** error);
TARVO_API tarvo_status tarvo_picture_decode(const void* bytes, size_t length, const tarvo_read_options* options,
                                            tarvo_picture** picture, tarvo_error** error);

/* Where the part file is that the bytes go to. */
typedef enum tarvo_part_file TARVO_INT {
    TARVO_PART_FILE_MAKING = 1, /* one is going to be made */
    TARVO_PART_FILE_MADE = 2,   /* it is `name` in the open `folder`; both are valid until it is gone */
    TARVO_PART_FILE_GONE = 3    /* it has the file's name now, or was removed, or never came to be */
} tarvo_part_file;

/* What a picture carries of its file besides pixels; results of operations that are called on it carry it too. Values
 * may be added up. */
typedef enum tarvo_metadata TARVO_INT {
    TARVO_METADATA_EXIF = 1, /* from its TIFF header on: upright, of the size that was read, without preview */
    TARVO_METADATA_XMP = 2,
    TARVO_METADATA_IPTC = 4, /* its records */
    TARVO_METADATA_ICC = 8,  /* the colour profile; the pixels are not changed by it */
    TARVO_METADATA_RESOLUTION = 16,
    TARVO_METADATA_ALL = 31
} tarvo_metadata;

/* How much time is taken for a smaller PNG, TIFF or WebP file; its pixels are the same. FAST of TIFF is none. */
typedef enum tarvo_compression TARVO_INT {
    TARVO_COMPRESSION_NORMAL = 0,
    TARVO_COMPRESSION_FAST = 1,
    TARVO_COMPRESSION_SMALL = 2
} tarvo_compression;

typedef struct tarvo_write_options {
    size_t size;
    int32_t jpeg_quality; /* 1 to 100; 0: that of the JPEG file the picture comes from, or 92; WebP loses nothing */
    int (*yield)(void* context);                                    /* as for reading; an old file stays as it was */
    void* context;                                                  /* of all functions here */
    void (*note)(void* context, tarvo_note kind, const char* text); /* as for reading */
    /* For programs whose signals are to remove what is half written: unlinkat(folder, name, 0). The library leaves
     * signals alone. */
    void (*part_file)(void* context, tarvo_part_file now, int folder, const char* name);
    uint64_t max_memory; /* bytes for the picture and the string that it becomes; more are TARVO_MEMORY; 0: no bound */
    uint32_t strip;      /* kinds of metadata, of tarvo_metadata, that the file is not to have: that is no loss */
    tarvo_compression compression;
} tarvo_write_options;

/* Writes the format that the name's ending tells: .png .jpg .jpeg .tif .tiff .webp .pbm .pgm .ppm .pam .trv. The file
 * appears whole or not at all. PNG, TIFF, WebP, PAM and TRV keep the mask; the others show the picture without it. */
TARVO_API tarvo_status tarvo_picture_save(const tarvo_picture* picture, const char* path,
                                          const tarvo_write_options* options, tarvo_error** error);
/* The same in memory. `format` is an ending, with its dot or without: "png". The bytes are freed with tarvo_free. */
TARVO_API tarvo_status tarvo_picture_encode(const tarvo_picture* picture, const char* format,
                                            const tarvo_write_options* options, uint8_t** bytes, size_t* length,
                                            tarvo_error** error);
/* Finds, before any work, what would keep a picture from being saved under that name, as far as that shows. */
TARVO_API tarvo_status tarvo_check_output(const char* path, tarvo_error** error);
/* NULL is allowed. */
TARVO_API void tarvo_free(void* bytes);

/* Of NULL: 0. */
TARVO_API int32_t tarvo_picture_width(const tarvo_picture* picture);
TARVO_API int32_t tarvo_picture_height(const tarvo_picture* picture);
/* Bits for a pixel: 1, 2, 4, 8, 16, 24 or 32. */
TARVO_API int32_t tarvo_picture_depth(const tarvo_picture* picture);
/* 1 or 0. */
TARVO_API int tarvo_picture_has_mask(const tarvo_picture* picture);

/* The bytes of one kind of the first four, which belong to the picture; NULL for none. `length` may be NULL. */
TARVO_API const uint8_t* tarvo_picture_metadata(const tarvo_picture* picture, tarvo_metadata kind, size_t* length);
/* Dots an inch, across and along. Returns 1, or 0 where they are not known. */
TARVO_API int tarvo_picture_resolution(const tarvo_picture* picture, double* x, double* y);

/* Gives the same pixels, without a copy of them, with other bytes of one of the first four kinds, as
 * tarvo_picture_metadata tells them; of length 0, without that kind. More than 8 MiB are TARVO_LIMIT. */
TARVO_API tarvo_status tarvo_picture_with_metadata(const tarvo_picture* picture, tarvo_metadata kind, const void* bytes,
                                                   size_t length, tarvo_picture** made, tarvo_error** error);
/* The same with another resolution, in dots an inch above 0; both 0: without one. */
TARVO_API tarvo_status tarvo_picture_with_resolution(const tarvo_picture* picture, double x, double y,
                                                     tarvo_picture** made, tarvo_error** error);

/* Writes the pixels in a layout. `stride` is as for tarvo_picture_from_rows; bytes between rows are not touched. GREY8
 * is the luma (77 R + 151 G + 28 B + 128) / 256; A is 255 without a mask; x is 0 unless the picture has stored
 * something else. */
TARVO_API tarvo_status tarvo_picture_to_rows(const tarvo_picture* picture, void* pixels, ptrdiff_t stride,
                                             tarvo_layout layout, tarvo_error** error);
/* The stored pixels, without a copy: TARVO_XRGB32, read-only. NULL unless the picture is 32 bits deep. `stride` may be
 * NULL. */
TARVO_API const uint8_t* tarvo_picture_pixels(const tarvo_picture* picture, ptrdiff_t* stride);
/* SHA-256, in 64 small hexadecimal digits and a zero byte, of the line "tarvo-pixels 1 WIDTH HEIGHT CHANNELS\n" and
 * then the rows from the top, a pixel being R, G, B and, if there is a mask, A: CHANNELS is 3 or 4. */
TARVO_API tarvo_status tarvo_picture_sha256(const tarvo_picture* picture, char hex[65]);

/* Counts one more owner, and returns the picture. */
TARVO_API tarvo_picture* tarvo_picture_retain(tarvo_picture* picture);
/* Ends what a caller has: the last one frees the pixels. NULL is allowed. */
TARVO_API void tarvo_picture_release(tarvo_picture* picture);

/* --- objects ------------------------------------------------------------------------------------------------------------ */

/* An instance of a class: a rectangle, a matrix, a convolution. Its methods change it: one thread at a time. */
typedef struct tarvo_object tarvo_object;

/* `class_name` is "TRV_Rectangle", "TRV_ColorMatrix", "TRV_Convolution" or "TRV_ClientPicture", in letters of either
 * case. */
TARVO_API tarvo_status tarvo_object_new(const char* class_name, tarvo_object** object, tarvo_error** error);
/* The name of its class as it is registered; "" of NULL. */
TARVO_API const char* tarvo_object_class(const tarvo_object* object);
/* These two may be called on any thread, also while another one uses the object. */
TARVO_API tarvo_object* tarvo_object_retain(tarvo_object* object);
TARVO_API void tarvo_object_release(tarvo_object* object);

/* --- calls -------------------------------------------------------------------------------------------------------------- */

typedef enum tarvo_type TARVO_INT {
    TARVO_NIL = 0,     /* no picture, no rectangle, ... */
    TARVO_INTEGER = 1, /* as.integer */
    TARVO_REAL = 2,    /* as.real */
    TARVO_BOOLEAN = 3, /* as.boolean: 0 or not */
    TARVO_COLOR = 4,   /* as.color: 0x00RRGGBB */
    TARVO_BYTES = 5,   /* as.bytes: a string, or a block of memory; a zero byte follows those that the library gives */
    TARVO_PICTURE = 6, /* as.picture */
    TARVO_OBJECT = 7,  /* as.object */
    TARVO_INTEGERS = 8 /* as.integers: an array */
} tarvo_type;

typedef struct tarvo_bytes {
    const void* data;
    size_t length;
} tarvo_bytes;

typedef struct tarvo_integers {
    const int32_t* data;
    size_t count;
} tarvo_integers;

/* Owns nothing: what it points to must live as long as it is used. */
typedef struct tarvo_value {
    tarvo_type type;
    union {
        int32_t integer;
        double real;
        int32_t boolean;
        uint32_t color;
        tarvo_bytes bytes;
        tarvo_picture* picture;
        tarvo_object* object;
        tarvo_integers integers;
    } as;
} tarvo_value;

/* Without a name an argument goes to the next place; named ones come behind those. Names are those of the declaration.
 */
typedef struct tarvo_argument {
    const char* name;
    tarvo_value value;
} tarvo_argument;

typedef struct tarvo_call_options {
    size_t size;
    int32_t yield_pixels;        /* `yield` is called about every so many pixels; 0: every 1,048,576 */
    int (*yield)(void* context); /* not 0 stops with TARVO_CANCELLED; NULL: nobody is asked. It may call the library. */
    void* context;
    int32_t threads;     /* the most threads for one large picture; 0: one a processor. Without options: 1 */
    int32_t read_files;  /* not 0: file names in the text of tarvo_apply are read; otherwise they are TARVO_USE */
    uint64_t max_pixels; /* as for reading, of each picture that the call makes */
    uint64_t max_memory;
    void (*note)(void* context, tarvo_note kind, const char* text); /* as for reading */
    int32_t client_pictures; /* not 0: a TRV_ClientPicture comes back as a TARVO_OBJECT; otherwise as a picture */
} tarvo_call_options;

/* What a call gives. Never changes. */
typedef struct tarvo_result tarvo_result;

/* Calls an operation by its name ("TRV_Stretch", or "Stretch") on `self`, or without: NULL. The method or property of a
 * class has the class in front: "TRV_ColorMatrix.Multiply" on a TARVO_OBJECT; a property is read without arguments and
 * set with one; a method that can be assigned to takes the new value as one argument more ("TRV_ColorMatrix.Value":
 * row, column, value). Of several forms the one that the arguments fit best is called. Arguments with a default may be
 * left out, and so may what is only given back; a nil result without a reason is a failure. An operation that would
 * change its picture works on a copy, and that is the result. */
TARVO_API tarvo_status tarvo_call(const char* operation, const tarvo_value* self, const tarvo_argument* arguments,
                                  size_t count, const tarvo_call_options* options, tarvo_result** result,
                                  tarvo_error** error);
/* Calls what a text says, as the tool's `apply` does: "Stretch(fit(800, 600))". `picture` may be NULL for an operation
 * that makes one. */
TARVO_API tarvo_status tarvo_apply(const char* text, tarvo_picture* picture, const tarvo_call_options* options,
                                   tarvo_result** result, tarvo_error** error);
/* The same on any value: a picture, an object such as a TRV_ClientPicture; NULL stands for nothing. */
TARVO_API tarvo_status tarvo_apply_on(const char* text, const tarvo_value* self, const tarvo_call_options* options,
                                      tarvo_result** result, tarvo_error** error);
/* Finds what is wrong with such a text before any work: nothing is read, made or called. `on` is the class of what it
 * is to be called on, "picture" or "TRV_ClientPicture"; NULL for nothing. `gives` may be NULL; it gets the class of the
 * picture that comes of it, for the text that follows in a chain, and NULL when no picture does. It lives as long as
 * the library. */
TARVO_API tarvo_status tarvo_check(const char* text, const char* on, const char** gives, tarvo_error** error);

/* What the operation returns; TARVO_NIL for one that returns nothing. NULL only for NULL. To keep a picture or object
 * longer than the result, retain it. */
TARVO_API const tarvo_value* tarvo_result_value(const tarvo_result* result);
/* What came back in an argument; NULL when there is none of that name. */
TARVO_API const tarvo_value* tarvo_result_output(const tarvo_result* result, const char* name);
/* The name of the argument that comes back at this place, from 0; NULL behind the last one. */
TARVO_API const char* tarvo_result_output_name(const tarvo_result* result, size_t place);
/* A value as people read it: "12", "0.5", "&c00FF00", "a MemoryBlock of 12 bytes". `output` is as above; NULL stands
 * for what the operation returns. NULL when there is none of that name or no memory. Freed with tarvo_free. */
TARVO_API char* tarvo_result_text(const tarvo_result* result, const char* output);
/* The code of a result with a defect (a mask that could not be kept); 0 for a good one. */
TARVO_API int32_t tarvo_result_code(const tarvo_result* result);
/* The defect as an error that belongs to the result; NULL for a good one. */
TARVO_API const tarvo_error* tarvo_result_defect(const tarvo_result* result);
/* What was called, as it is registered: "TRV_Stretch". */
TARVO_API const char* tarvo_result_operation(const tarvo_result* result);
/* How long the operation took, without what was done to its arguments and its result. */
TARVO_API double tarvo_result_milliseconds(const tarvo_result* result);
/* NULL is allowed. */
TARVO_API void tarvo_result_release(tarvo_result* result);

#ifdef __cplusplus
}
#endif

#endif
