// A host in Rust: both calls, guarded. Build it for 64-bit Windows, with the two DLLs beside the program:
//
//     rustc -L LIB host.rs       (LIB is the folder lib of the package)
//
// A test compares the declarations of this file with guarded_calls.h and publisher.h, which say what they mean.
#![allow(non_snake_case, dead_code)]

const NOTHING_REPORTED: u32 = 0;
const REPORTED: u32 = 1;
const UNTRUSTED_ADDRESS: u32 = 5;
const MESSAGE_WITHHELD: u32 = 6;
const PUBLISHER_TRUSTED: u32 = 100;

#[repr(C)]
struct GuardedCall {
    size: u32,
    languageId: i32,
    productName: *const u16,
    productVersion: *const u16,
    apiKey: *const u16,
    text: *mut u16,
    textCapacity: u32,
    resultCode: u32,
    isTextCut: u32,
    options: u32,
    trustedHosts: *const u16,
}

#[link(name = "ProductServicesGuard")]
extern "C" {
    fn GuardedCheckForUpdates(call: *mut GuardedCall) -> u32;
    fn GuardedUpgrade(call: *mut GuardedCall) -> u32;
    fn UseWindowsProxy(serviceAddress: *const u16, text: *mut u16, textCapacity: u32) -> u32;
    fn VerifyPublisher(path: *const u16, publisher: *const u16, text: *mut u16, textCapacity: u32) -> u32;
}

fn utf16(text: &str) -> Vec<u16> {
    text.encode_utf16().chain([0]).collect()
}

fn print(name: &str, outcome: u32, code: u32, text: &[u16]) {
    let end = text.iter().position(|&unit| unit == 0).unwrap_or(text.len());
    let text = String::from_utf16_lossy(&text[..end]);
    match outcome {
        NOTHING_REPORTED => println!("{name}: nothing was reported"),
        REPORTED => println!("{name}: {code}: {text}"), // with 200 a trusted address to download from
        UNTRUSTED_ADDRESS => println!("{name}: not to be opened: {text}"),
        MESSAGE_WITHHELD => println!("{name}: not shown, since the check is quiet: {text}"),
        _ => println!("{name}: error: {text}"),
    }
}

fn main() {
    let (name, version) = (utf16("Example Draft"), utf16("2026.1"));
    let (key, hosts) = (utf16("draft20-7k2m9q-x4v8p1w"), utf16("localhost:18443"));
    let mut text = vec![0u16; 65536];
    let mut call = GuardedCall {
        size: std::mem::size_of::<GuardedCall>() as u32, languageId: 120,
        productName: name.as_ptr(), productVersion: version.as_ptr(), apiKey: key.as_ptr(),
        text: text.as_mut_ptr(), textCapacity: text.len() as u32,
        resultCode: 0, isTextCut: 0, options: 0, trustedHosts: hosts.as_ptr(),
    };
    let outcome = unsafe { GuardedCheckForUpdates(&mut call) };
    print("CheckForUpdates", outcome, call.resultCode, &text);
    let outcome = unsafe { GuardedUpgrade(&mut call) }; // in a host with windows, on the thread that shows them
    print("Upgrade", outcome, call.resultCode, &text);
}
