// What the listing does not contain about names that the program needs, each with the reason why it
// is right. Kept short: everything that the listing contains is checked against it.

/// Numbers that the listing has without a value. Those with a value are constants of the header (no
/// symbol of a library), as Apple documents them; `exported` ones are symbols of the library.
export const numbers = {
  NSAlertFirstButtonReturn: { value: 1000 },
  NSControlStateValueOn: { value: 1 },
  NSFileWriteUnknownError: { value: 512 },
  NSFontWeightRegular: { exported: true },
  NSModalResponseAbort: { value: -1001 },
  NSModalResponseOK: { value: 1 },
  NSUTF8StringEncoding: { value: 4 },
  NSVariableStatusItemLength: { value: -1 },
};

/// Findings to ignore: the declared thing as findings name it -> the reason.
export const exceptions = {
  NSMakePoint: 'an inline function of the header; the listing has only those of libraries',
  NSMaxRange: 'an inline function of the header; the listing has only those of libraries',
};
