// What the application uses of AppKit, declared from its public reference, so that the sources can
// be type-checked on any system. Nothing here is linked.
#pragma once

#import <AppKit/NSOpenPanel.h>
#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>

// Of Foundation, what only views use.

#define NS_UNAVAILABLE __attribute__((unavailable))

@class NSCoder, NSNotification;

@interface NSArray <__covariant Element>(Literals)
+ (instancetype)arrayWithObjects:(const Element[])objects count:(NSUInteger)count;
@end

@interface NSURL (FileReferences)
@property(readonly, copy) NSURL* filePathURL;
@end

extern "C" CGRect CGRectInset(CGRect rect, CGFloat dx, CGFloat dy);

using NSPoint = CGPoint;
using NSSize = CGSize;
using NSRect = CGRect;

constexpr NSRect NSZeroRect{};

inline NSSize NSMakeSize(CGFloat width, CGFloat height) {
  return {width, height};
}

inline NSRect NSMakeRect(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
  return {{x, y}, {width, height}};
}

typedef NS_ENUM(NSUInteger, NSRectEdge) {
  NSRectEdgeMinX = 0,
  NSRectEdgeMinY = 1,
  NSRectEdgeMaxX = 2,
  NSRectEdgeMaxY = 3,
};

typedef NSUInteger NSAutoresizingMaskOptions;
enum : NSUInteger {
  NSViewWidthSizable = 2,
  NSViewHeightSizable = 16,
};

typedef NSUInteger NSDragOperation;
enum : NSUInteger {
  NSDragOperationNone = 0,
  NSDragOperationCopy = 1,
};

typedef NS_ENUM(NSUInteger, NSCompositingOperation) {
  NSCompositingOperationSourceOver = 2,
};

typedef NS_ENUM(NSInteger, NSApplicationActivationPolicy) {
  NSApplicationActivationPolicyRegular = 0,
  NSApplicationActivationPolicyAccessory = 1,
};

typedef NS_ENUM(NSInteger, NSPopoverBehavior) {
  NSPopoverBehaviorApplicationDefined = 0,
  NSPopoverBehaviorTransient = 1,
};

typedef NSString* NSPasteboardType;
extern NSPasteboardType const NSPasteboardTypeFileURL;
typedef NSString* NSPasteboardReadingOptionKey;

@interface NSPasteboard : NSObject
- (NSArray*)readObjectsForClasses:(NSArray<Class>*)classes
                          options:(NSDictionary<NSPasteboardReadingOptionKey, id>*)options;
@end

@protocol NSDraggingInfo <NSObject>
@property(readonly) NSPasteboard* draggingPasteboard;
@end

@interface NSEvent : NSObject
@property(readonly) NSTimeInterval timestamp;
@end

@interface NSColor : NSObject
@property(class, readonly, strong) NSColor* controlAccentColor;
- (NSColor*)colorWithAlphaComponent:(CGFloat)alpha;
- (void)setFill;
@end

@interface NSBezierPath : NSObject
+ (NSBezierPath*)bezierPathWithRoundedRect:(NSRect)rect
                                   xRadius:(CGFloat)xRadius
                                   yRadius:(CGFloat)yRadius;
- (void)fill;
@end

@interface NSImage : NSObject
@property NSSize size;
- (void)setTemplate:(BOOL)isTemplate;
+ (NSImage*)imageNamed:(NSString*)name;
+ (instancetype)imageWithSystemSymbolName:(NSString*)name
                 accessibilityDescription:(NSString*)description;
- (instancetype)initWithSize:(NSSize)size NS_DESIGNATED_INITIALIZER;
- (void)lockFocus;
- (void)unlockFocus;
- (void)drawInRect:(NSRect)destination
          fromRect:(NSRect)source
         operation:(NSCompositingOperation)operation
          fraction:(CGFloat)fraction;
@end

@interface NSResponder : NSObject
@property(assign) NSResponder* nextResponder;
- (instancetype)init NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithCoder:(NSCoder*)coder NS_DESIGNATED_INITIALIZER;
- (void)mouseDown:(NSEvent*)event;
- (void)mouseUp:(NSEvent*)event;
- (void)rightMouseDown:(NSEvent*)event;
- (void)rightMouseUp:(NSEvent*)event;
@end

@class NSWindow;

@interface NSView : NSResponder
@property NSRect frame;
@property NSRect bounds;
@property CGFloat alphaValue;
@property BOOL needsDisplay;
@property NSAutoresizingMaskOptions autoresizingMask;
@property(readonly, assign) NSWindow* window;
- (instancetype)initWithFrame:(NSRect)frame NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithCoder:(NSCoder*)coder NS_DESIGNATED_INITIALIZER;
- (void)addSubview:(NSView*)view;
- (void)removeFromSuperview;
- (NSView*)hitTest:(NSPoint)point;
- (void)drawRect:(NSRect)dirtyRect;
- (void)registerForDraggedTypes:(NSArray<NSPasteboardType>*)types;
@end

/// NSView conforms to the protocol of the same methods, all of them optional.
@interface NSView (NSDraggingDestination)
- (NSDragOperation)draggingEntered:(id<NSDraggingInfo>)sender;
- (void)draggingExited:(id<NSDraggingInfo>)sender;
- (BOOL)performDragOperation:(id<NSDraggingInfo>)sender;
@end

@interface NSWindow : NSResponder
- (void)makeKeyWindow;
- (BOOL)makeFirstResponder:(NSResponder*)responder;
@end

@interface NSControl : NSView
@property(weak) id target;
@property SEL action;
@end

@interface NSButton : NSControl
@property(strong) NSImage* image;
@end

@interface NSStatusBarButton : NSButton
@end

extern const CGFloat NSVariableStatusItemLength;

@interface NSStatusItem : NSObject
@property(readonly, strong) NSStatusBarButton* button;
@end

@interface NSStatusBar : NSObject
@property(class, readonly, strong) NSStatusBar* systemStatusBar;
- (NSStatusItem*)statusItemWithLength:(CGFloat)length;
- (void)removeStatusItem:(NSStatusItem*)item;
@end

@interface NSViewController : NSResponder
@property(strong) NSView* view;
@end

@protocol NSPopoverDelegate <NSObject>
@optional
- (void)popoverWillClose:(NSNotification*)notification;
- (void)popoverDidClose:(NSNotification*)notification;
@end

@interface NSPopover : NSResponder
@property(weak) id<NSPopoverDelegate> delegate;
@property(strong) NSViewController* contentViewController;
@property NSSize contentSize;
@property NSPopoverBehavior behavior;
@property(readonly, getter=isShown) BOOL shown;
- (void)showRelativeToRect:(NSRect)rect ofView:(NSView*)view preferredEdge:(NSRectEdge)edge;
- (void)performClose:(id)sender;
- (void)close;
@end

@interface NSApplication : NSResponder
@property(class, readonly, strong) __kindof NSApplication* sharedApplication;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
- (void)terminate:(id)sender;
@end
