/** @file
 * What every korv header includes: linkage, the block header, status codes, conventions.
 *
 * @since 1.0 */

/** @page conventions Conventions
 *
 * They apply to every function unless its own comment says otherwise.
 *
 *  1. **Results.** A function that can fail returns a signed 32-bit status. 0 means success, and so
 *     does 65 from GetDataTypeLengths. Other codes are listed in KorvStatus; KORV_GetNextElement
 *     also returns -2 and -3. Codes of the companion
 *     library are returned unchanged. Nothing is logged and nothing is thrown.
 *  2. **Failure.** On failure an output is left as it was. If members of a record have been
 *     written before the failure, the function's comment says which.
 *  3. **NULL.** A function tests a pointer for NULL only where its comment lists a status for that;
 *     every other pointer must be valid. "Empty" means an empty string or list, never NULL.
 *  4. **Lengths.** A length counts bytes or characters. A character is one unit of the text: 1 byte
 *     in narrow text, 4 bytes (wchar_t) in wide text. A length passed with a buffer is trusted.
 *  5. **Ownership.** The caller owns what it passes. Records, texts and buffers that the library
 *     allocates are blocks of the process heap; the comment names the function that releases them,
 *     or says that the caller uses free().
 *  6. **Threads.** The library has no threads and no locks. Every function may run in any number of
 *     threads at once on distinct records and buffers, except KORVRandomValue.
 *  7. **Stack.** Every function may be entered with a stack that is aligned to 4 bytes only, and in
 *     a thread with a stack of 16 KiB.
 *  8. **Locale.** The library never sets one. Functions that follow the host's locale say so.
 */
#ifndef KORV_BASE_H
#define KORV_BASE_H

#include <stddef.h>
#include <stdint.h>

/* pkg-config says for which pointers an installed library is made: records differ in size. */
#if defined(KORV_POINTER_BYTES) && defined(__SIZEOF_POINTER__)
#if KORV_POINTER_BYTES != __SIZEOF_POINTER__
#error "the installed korv library is made for the other word size: compile with -m32 (or -m64)"
#endif
#endif

/** Version of the package, also for the preprocessor. */
#define KORV_VERSION_MAJOR 1
#define KORV_VERSION_MINOR 1 /**< of the package */
#define KORV_VERSION_PATCH 0 /**< of the package */
/** The version as one number that grows from release to release: 0x010203 for 1.2.3. */
#define KORV_VERSION_NUM (KORV_VERSION_MAJOR << 16 | KORV_VERSION_MINOR << 8 | KORV_VERSION_PATCH)

#if defined(__GNUC__)
/** Before the declaration of what the library exports. */
#define KORV_API __attribute__((visibility("default")))
/** After the declarator of a constant of which each module has a copy, used or not. */
#define KORV_UNUSED __attribute__((unused))
#else
#define KORV_API
#define KORV_UNUSED
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Wide text is made of 4-byte units; a compiler option that narrows wchar_t would break every
 * record that holds wide text. */
typedef char korv_wchar_has_4_bytes[sizeof(wchar_t) == 4 ? 1 : -1];

/** Every status of the library. The numbers are stored by callers and never change. */
typedef enum KorvStatus {
    KORV_FAILURE = -1,       /**< an argument is NULL, or the step that the comment names failed */
    KORV_SUCCESS = 0,        /**< done */
    KORV_TOKEN_BAD_ID = 1,   /**< token identifier outside the catalogue */
    KORV_TOKEN_NO_SLOT = 2,  /**< the newest error record takes no tokens */
    KORV_TOKEN_BAD_TYPE = 3, /**< a value of this data type cannot be captured */
    KORV_TYPE_NO_FIELD = 48, /**< the field definition is NULL */
    KORV_TYPE_UNKNOWN = 49,  /**< no such data type, or one without a size */
    KORV_TYPE_VARIABLE = 50, /**< the length depends on the value */
    KORV_TYPE_DATETIME = 65, /**< success: the length of a date and time held as text */
    KORV_NO_MEMORY_WIDE_VALUE = 78,   /**< wide operand text or wide value */
    KORV_BAD_VALUE_LENGTH = 82,       /**< negative length of an operand's text value */
    KORV_BAD_TEXT_LENGTH = 83,        /**< zero or negative length of a narrow field text */
    KORV_NO_MEMORY_WIDE_TEXT = 84,    /**< wide field text */
    KORV_NO_MEMORY_NARROW_TEXT = 85,  /**< narrow field text */
    KORV_NO_MEMORY_NARROW_VALUE = 89, /**< narrow operand value */
    KORV_NO_MEMORY_FIELD = 99,        /**< X field definition */
    KORV_NO_MEMORY_REFERENCE = 100,   /**< X field reference node */
    KORV_NO_MEMORY_OPERAND = 102,     /**< X operand definition */
    KORV_NO_MEMORY_BUFFER = 106,      /**< work buffer; the caller's pointer is now NULL */
    KORV_BAD_BUFFER_SIZE = 107        /**< work buffer of less than 1 byte */
} KorvStatus;

/** The version that every record written by the library carries. */
#define KORV_BLOCK_VERSION 21

/** Head of the framework's records. In a record that sits in a list it follows the link. */
typedef struct BlockHeader {
    char eyeCatcher[4]; /**< not terminated */
    uint16_t version;   /**< KORV_BLOCK_VERSION */
    uint16_t length;    /**< size of the record in bytes */
} BlockHeader;

#ifdef __cplusplus
}
#endif

#endif
