/** @file
 * What every korv header includes: linkage, the block header, status codes, conventions.
 *
 * @since 1.0 */

/** @page conventions Conventions
 *
 * These conventions apply to every function unless its own comment says otherwise.
 *
 *  1. **Results.** Most functions return a signed 32-bit status. 0 means success, and so does 65
 *     from GetDataTypeLengths. The other codes are listed in KorvStatus, for the masking engine in
 *     KorvMaskStatus. Codes of the companion library are returned unchanged. A function that
 *     returns a number, an index or a class says so. Nothing is logged and nothing is thrown.
 *  2. **Failure.** On failure an output is left as it was. If members of a record have been
 *     written before the failure, the function's comment says which.
 *  3. **NULL.** A pointer may be NULL only where the function's comment says so or lists a status
 *     for it; every other pointer must be valid. "Empty" means an empty string or list, never NULL.
 *  4. **Lengths.** A length counts bytes or characters. A character is one unit of the text: 1 byte
 *     in narrow text, 4 bytes (wchar_t) in wide text. A length passed with a buffer is trusted.
 *  5. **Ownership.** The caller owns what it passes. Records, texts and buffers that the library
 *     allocates are blocks of the process heap; the comment names the function that releases them,
 *     or says that the caller uses free().
 *  6. **Threads.** The library has no threads and no locks. Every function may run in any number of
 *     threads at once on distinct records and buffers, except KORVRandomValue.
 *  7. **Stack.** In the 32-bit build, every function of the support library and of the companion
 *     library may be called with a stack that is aligned to 4 bytes only, and in a thread with a
 *     stack of 16 KiB. The 64-bit build needs the 16-byte alignment of its ABI.
 *  8. **Locale.** The support library never sets a locale. Functions that follow the locale of the
 *     process say so.
 */
#ifndef KORV_BASE_H
#define KORV_BASE_H

#include <stddef.h>
#include <stdint.h>

/* The flags of pkg-config name the pointer size of the installed library: the sizes of records
 * depend on it. */
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
/** Marks a declaration as exported. */
#define KORV_API __attribute__((visibility("default")))
/** Follows the declarator of a constant that is copied into each module, and avoids a warning where
 * the copy is not used. */
#define KORV_UNUSED __attribute__((unused))
#else
#define KORV_API
#define KORV_UNUSED
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Compile-time check that wchar_t has 4 bytes. With a compiler option that narrows it, every
 * record that holds wide text would be wrong. */
typedef char korv_wchar_has_4_bytes[sizeof(wchar_t) == 4 ? 1 : -1];

/** Every status of the library. The numbers are stored by callers and never change. */
typedef enum KorvStatus {
    KORV_FAILURE = -1, /**< The call failed as the function's comment says, for example because of a
                        * NULL argument; from a function that answers a question: no. */
    KORV_SUCCESS = 0,  /**< The call succeeded; from a function that answers a question: yes. */
    KORV_TOKEN_BAD_ID = 1,   /**< The token identifier is outside the catalogue. */
    KORV_TOKEN_NO_SLOT = 2,  /**< The newest error record takes no tokens. */
    KORV_TOKEN_BAD_TYPE = 3, /**< A value of this data type cannot be captured. */
    KORV_TYPE_NO_FIELD = 48, /**< The field definition is NULL. */
    KORV_TYPE_UNKNOWN = 49,  /**< The data type is unknown, or has no size. */
    KORV_TYPE_VARIABLE = 50, /**< The length depends on the value. */
    KORV_TYPE_DATETIME = 65, /**< The call succeeded: the type is a date and time held as text. */
    KORV_NO_MEMORY_WIDE_VALUE = 78,   /**< There is no memory for operand text or a wide value. */
    KORV_BAD_VALUE_LENGTH = 82,       /**< The length of an operand's text value is negative. */
    KORV_BAD_TEXT_LENGTH = 83,        /**< The length of a narrow field text is zero or negative. */
    KORV_NO_MEMORY_WIDE_TEXT = 84,    /**< There is no memory for wide field text. */
    KORV_NO_MEMORY_NARROW_TEXT = 85,  /**< There is no memory for narrow field text. */
    KORV_NO_MEMORY_NARROW_VALUE = 89, /**< There is no memory for a narrow operand value. */
    KORV_NO_MEMORY_FIELD = 99,      /**< There is no memory for a field definition of the X form. */
    KORV_NO_MEMORY_REFERENCE = 100, /**< There is no memory for a field reference of the X form. */
    KORV_NO_MEMORY_OPERAND = 102,   /**< There is no memory for an operand of the X form. */
    KORV_NO_MEMORY_BUFFER = 106,    /**< There is no memory for a work buffer, now NULL. */
    KORV_BAD_BUFFER_SIZE = 107      /**< The size of a work buffer is less than 1 byte. */
} KorvStatus;

/** The version that every record written by the library carries. */
#define KORV_BLOCK_VERSION 21

/** Head of the framework's records. In a record that sits in a list it follows the link. */
typedef struct BlockHeader {
    char eyeCatcher[4]; /**< not terminated */
    uint16_t version;   /**< KORV_BLOCK_VERSION */
    uint16_t length; /**< size of the record in bytes; of an ErrorRecord the size with one slot */
} BlockHeader;

#ifdef __cplusplus
}
#endif

#endif
