// The part of Foundation that is used here, declared from its public documentation
// (developer.apple.com/documentation/foundation), so that the macOS sources can be checked on other
// systems. It is never used on macOS itself.
#pragma once

#include <stddef.h>
#include <stdint.h>

typedef signed char BOOL;
#define YES ((BOOL)1)
#define NO ((BOOL)0)
#define nil nullptr
#define NS_ENUM(type, name) \
  enum name : type name;    \
  enum name : type
#define NS_OPTIONS(type, name) \
  type name;                   \
  enum : type
#define NS_VALID_UNTIL_END_OF_SCOPE __attribute__((objc_precise_lifetime))
#define NS_UNAVAILABLE __attribute__((unavailable))
#define NS_DESIGNATED_INITIALIZER __attribute__((objc_designated_initializer))
typedef long NSInteger;
typedef unsigned long NSUInteger;

#pragma clang assume_nonnull begin

@class NSArray<Element>, NSCoder, NSData, NSDictionary<Key, Value>, NSError, NSNotification,
    NSString, NSURL;

@protocol NSObject
- (BOOL)isKindOfClass:(Class)aClass;
- (BOOL)respondsToSelector:(SEL)selector;
@end

__attribute__((objc_root_class))
@interface NSObject <NSObject>
+ (instancetype)alloc;
+ (instancetype)new;
- (instancetype)init NS_DESIGNATED_INITIALIZER;
+ (Class)class;
@end

typedef struct {
  unsigned long state;
  id __unsafe_unretained _Nullable* _Nullable itemsPtr;
  unsigned long* _Nullable mutationsPtr;
  unsigned long extra[5];
} NSFastEnumerationState;

@protocol NSFastEnumeration
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState*)state
                                  objects:(id __unsafe_unretained _Nullable[_Nonnull])buffer
                                    count:(NSUInteger)length;
@end

@protocol NSCopying
@end

typedef NSUInteger NSStringEncoding;
static const NSStringEncoding NSUTF8StringEncoding = 4;

@interface NSString : NSObject <NSCopying>
@property(readonly, nullable) const char* UTF8String;
+ (nullable instancetype)stringWithUTF8String:(const char*)text;
- (nullable instancetype)initWithBytes:(const void*)bytes
                                length:(NSUInteger)length
                              encoding:(NSStringEncoding)encoding;
@end

@interface NSNumber : NSObject
+ (NSNumber*)numberWithBool:(BOOL)value;
@property(readonly) unsigned long long unsignedLongLongValue;
@property(readonly) BOOL boolValue;
@end

@interface NSData : NSObject
+ (instancetype)dataWithBytes:(nullable const void*)bytes length:(NSUInteger)length;
@property(readonly) NSUInteger length;
@property(readonly) const void* bytes __attribute__((objc_returns_inner_pointer));
@end

@interface NSArray<__covariant Element> : NSObject <NSFastEnumeration>
@property(readonly) NSUInteger count;
+ (instancetype)arrayWithObjects:(const Element _Nonnull[_Nullable])objects
                           count:(NSUInteger)count;
@end

@interface NSMutableArray<Element> : NSArray <Element>
+ (instancetype)arrayWithCapacity:(NSUInteger)capacity;
- (void)addObject:(Element)object;
@end

@interface NSDictionary<__covariant Key, __covariant Value> : NSObject
+ (instancetype)dictionaryWithObjects:(const Value _Nonnull[_Nullable])objects
                              forKeys:(const Key _Nonnull[_Nullable])keys
                                count:(NSUInteger)count;
- (nullable Value)objectForKeyedSubscript:(Key)key;
@end

@interface NSError : NSObject
@property(readonly) NSInteger code;
@property(readonly, copy) NSString* localizedDescription;
@end

typedef NSUInteger NSURLBookmarkCreationOptions;
typedef NSUInteger NSURLBookmarkResolutionOptions;
static const NSURLBookmarkCreationOptions NSURLBookmarkCreationWithSecurityScope = 1 << 11;
static const NSURLBookmarkResolutionOptions NSURLBookmarkResolutionWithSecurityScope = 1 << 10;

typedef NSString* NSURLResourceKey;
extern NSURLResourceKey const NSURLVolumeSupportsSwapRenamingKey;
extern NSString* const NSURLPathKey;

@interface NSURL : NSObject
+ (NSURL*)fileURLWithFileSystemRepresentation:(const char*)path
                                  isDirectory:(BOOL)isDirectory
                                relativeToURL:(nullable NSURL*)baseURL;
@property(nullable, readonly, copy) NSString* path;
@property(nullable, readonly, copy) NSURL* filePathURL;
@property(readonly) const char* fileSystemRepresentation;
@property(nullable, readonly, copy) NSURL* URLByResolvingSymlinksInPath;
- (BOOL)getResourceValue:(id _Nullable __autoreleasing* _Nonnull)value
                  forKey:(NSURLResourceKey)key
                   error:(NSError* _Nullable* _Nullable)error;
- (nullable NSURL*)URLByAppendingPathComponent:(NSString*)component;
- (nullable NSData*)bookmarkDataWithOptions:(NSURLBookmarkCreationOptions)options
             includingResourceValuesForKeys:(nullable NSArray<NSString*>*)keys
                              relativeToURL:(nullable NSURL*)relativeURL
                                      error:(NSError* _Nullable* _Nullable)error;
+ (nullable instancetype)URLByResolvingBookmarkData:(NSData*)bookmark
                                            options:(NSURLBookmarkResolutionOptions)options
                                      relativeToURL:(nullable NSURL*)relativeURL
                                bookmarkDataIsStale:(BOOL* _Nullable)isStale
                                              error:(NSError* _Nullable* _Nullable)error;
+ (nullable NSDictionary<NSString*, id>*)resourceValuesForKeys:(NSArray<NSString*>*)keys
                                              fromBookmarkData:(NSData*)bookmark;
- (BOOL)startAccessingSecurityScopedResource;
- (void)stopAccessingSecurityScopedResource;
@end

typedef NSUInteger NSFileManagerItemReplacementOptions;
typedef NSUInteger NSSearchPathDirectory;
typedef NSUInteger NSSearchPathDomainMask;
static const NSSearchPathDirectory NSItemReplacementDirectory = 99;
static const NSSearchPathDomainMask NSUserDomainMask = 1;
extern NSString* const NSFileSystemFreeSize;

@interface NSFileManager : NSObject
@property(class, readonly, strong) NSFileManager* defaultManager;
@property(readonly, copy) NSURL* temporaryDirectory;
- (BOOL)fileExistsAtPath:(NSString*)path isDirectory:(nullable BOOL*)isDirectory;
- (NSString*)stringWithFileSystemRepresentation:(const char*)path length:(NSUInteger)length;
- (nullable NSDictionary<NSString*, id>*)
    attributesOfFileSystemForPath:(NSString*)path
                            error:(NSError* _Nullable* _Nullable)error;
- (BOOL)moveItemAtURL:(NSURL*)source
                toURL:(NSURL*)destination
                error:(NSError* _Nullable* _Nullable)error;
- (BOOL)copyItemAtURL:(NSURL*)source
                toURL:(NSURL*)destination
                error:(NSError* _Nullable* _Nullable)error;
- (BOOL)removeItemAtURL:(NSURL*)url error:(NSError* _Nullable* _Nullable)error;
- (nullable NSURL*)URLForDirectory:(NSSearchPathDirectory)directory
                          inDomain:(NSSearchPathDomainMask)domain
                 appropriateForURL:(nullable NSURL*)url
                            create:(BOOL)shouldCreate
                             error:(NSError* _Nullable* _Nullable)error;
- (BOOL)replaceItemAtURL:(NSURL*)original
           withItemAtURL:(NSURL*)replacement
          backupItemName:(nullable NSString*)backupItemName
                 options:(NSFileManagerItemReplacementOptions)options
        resultingItemURL:(NSURL* _Nullable* _Nullable)resultingURL
                   error:(NSError* _Nullable* _Nullable)error;
@end

@interface NSFileHandle : NSObject
+ (nullable instancetype)fileHandleForReadingFromURL:(NSURL*)url
                                               error:(NSError* _Nullable* _Nullable)error;
@property(readonly) int fileDescriptor;
@end

@interface NSUserDefaults : NSObject
@property(class, readonly, strong) NSUserDefaults* standardUserDefaults;
- (void)registerDefaults:(NSDictionary<NSString*, id>*)defaults;
- (BOOL)boolForKey:(NSString*)key;
- (void)setBool:(BOOL)value forKey:(NSString*)key;
- (nullable NSArray*)arrayForKey:(NSString*)key;
- (void)setObject:(nullable id)value forKey:(NSString*)key;
@end

@interface NSBundle : NSObject
@property(class, readonly, strong) NSBundle* mainBundle;
- (nullable NSURL*)URLForAuxiliaryExecutable:(NSString*)name;
- (nullable NSURL*)URLForResource:(nullable NSString*)name
                    withExtension:(nullable NSString*)extension;
@end

typedef double NSTimeInterval;

@interface NSProcessInfo : NSObject
@property(class, readonly, strong) NSProcessInfo* processInfo;
@property(readonly) NSTimeInterval systemUptime;
@end

@interface NSLocale : NSObject
@property(class, readonly, copy) NSLocale* currentLocale;
@property(readonly, copy) NSString* languageCode;
@end

@interface NSPipe : NSObject
+ (NSPipe*)pipe;
@property(readonly, strong) NSFileHandle* fileHandleForWriting;
@end

typedef NSInteger NSTaskTerminationReason;
static const NSTaskTerminationReason NSTaskTerminationReasonUncaughtSignal = 2;

@interface NSTask : NSObject
@property(nullable, copy) NSURL* executableURL;
@property(nullable, copy) NSArray<NSString*>* arguments;
@property(nullable, strong) id standardError;
@property(readonly) int terminationStatus;
@property(readonly) NSTaskTerminationReason terminationReason;
- (BOOL)launchAndReturnError:(NSError* _Nullable* _Nullable)error;
- (void)waitUntilExit;
- (void)terminate;
@end

#pragma clang assume_nonnull end
