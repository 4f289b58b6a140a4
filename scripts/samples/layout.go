// Compiled with the sample in Go, which calls functions of Windows and therefore does not run here. Each line fails to
// compile if the sample differs from the C headers: an index of [1]int must be 0.
package main

import "unsafe"

var params guardedCallParams

var _ = [1]int{}[unsafe.Sizeof(params)-80]
var _ = [1]int{}[unsafe.Offsetof(params.languageId)-4]
var _ = [1]int{}[unsafe.Offsetof(params.productName)-8]
var _ = [1]int{}[unsafe.Offsetof(params.productVersion)-16]
var _ = [1]int{}[unsafe.Offsetof(params.apiKey)-24]
var _ = [1]int{}[unsafe.Offsetof(params.trustedHosts)-32]
var _ = [1]int{}[unsafe.Offsetof(params.options)-40]
var _ = [1]int{}[unsafe.Offsetof(params.timeLimitMs)-44]
var _ = [1]int{}[unsafe.Offsetof(params.cancelFlag)-48]
var _ = [1]int{}[unsafe.Offsetof(params.resultText)-56]
var _ = [1]int{}[unsafe.Offsetof(params.resultTextCapacity)-64]
var _ = [1]int{}[unsafe.Offsetof(params.resultCode)-68]
var _ = [1]int{}[unsafe.Offsetof(params.isTextTruncated)-72]

var _ = [1]int{}[outcomeNewerRelease-1]
var _ = [1]int{}[outcomeUpToDate-2]
var _ = [1]int{}[outcomeBrowserOpened-3]
var _ = [1]int{}[outcomeUserQuit-4]
var _ = [1]int{}[outcomeUnreachable-9]
var _ = [1]int{}[outcomeTimedOut-10]
var _ = [1]int{}[outcomeCancelled-11]
var _ = [1]int{}[outcomeUntrustedCertificate-12]
var _ = [1]int{}[outcomeUntrustedAddress-13]
var _ = [1]int{}[optionQuiet-1]
var _ = [1]int{}[optionSystemProxy-8]
var _ = [1]int{}[languageEn-120]
