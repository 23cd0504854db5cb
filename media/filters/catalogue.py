"""The filter catalogue: every filter name with its family, its fragment
program, its uniforms and their defaults, and what the processor sends each
frame. generate.py turns this table into the material scripts of
media/materials/ and the C++ table of modules/ogre/src; a new filter is one
row here and, when no program fits, one fragment program.

A uniform is (name, default) with an optional third element of flags:

  render_width, render_height  the default is the producer's render size; the
                               property of the same name still wins
  playtime                     the default is the producer's playtime
  sent_playtime, sent_fps,     sent without a property behind it: the
  sent_width, sent_height      producer's playtime, the profile's frame rate,
                               the render size
  colour=NAME/C                one channel (r, g, b or a) of the colour
                               property NAME, divided by 255 on the way
  computed                     worked out by the filter (masks, 3D LUT)
  property_only                a property that feeds computed uniforms and
                               is never sent itself
  init=V                       the constructor writes V instead of the default
  live                         force the uniform live (a change of its
                               property sends it) although its default is
                               computed
  dead                         a change of its property sends nothing
  key=NAME                     a change of the property NAME sends it
                               (colour channels of a key colour)

Plain uniforms are live; computed defaults are not.

A separable filter may name two defines of its program in `passes`: the
filter then draws the first into a render texture of its own and the second
from that texture, in place of its single-pass material (which stays, with
the same look, for whoever draws the material alone). Their materials are
NAME/Pass1 and NAME/Pass2 and take the filter's uniforms.
"""

# Float constants of a look, each given to the look program as a named
# constant of the material. Neutral values in brackets.
#   lift        rgb added to the shadows: c + lift * (1 - c)      [0 0 0]
#   gamma       rgb midtone exponent, above 1 brightens           [1 1 1]
#   gain        rgb multiplier                                    [1 1 1]
#   contrast    S-curve strength around mid grey, below 0 flattens [0]
#   saturation  colourfulness                                     [1]
#   shadow      rgb tint of the shadows                           [0 0 0]
#   highlight   rgb tint of the highlights                        [0 0 0]
#   fade        black level of a matte print                      [0]
#   mono        rgb paper colour and amount of a toned monochrome  [1 1 1 0]
#   hue         hue rotation in degrees                           [0]
#   vignette    darkening of the corners                          [0]
LOOK_NEUTRAL = {
    "lift": (0.0, 0.0, 0.0),
    "gamma": (1.0, 1.0, 1.0),
    "gain": (1.0, 1.0, 1.0),
    "contrast": 0.0,
    "saturation": 1.0,
    "shadow": (0.0, 0.0, 0.0),
    "highlight": (0.0, 0.0, 0.0),
    "fade": 0.0,
    "mono": (1.0, 1.0, 1.0, 0.0),
    "hue": 0.0,
    "vignette": 0.0,
}

# The 58 colour looks, in catalogue order, each with what sets it apart.
LOOKS = [
    # Eighties print: warm, rosy highlights, soft matte blacks.
    ("80TimeFilter", dict(gain=(1.08, 0.98, 0.9), highlight=(0.06, 0.0, 0.03), fade=0.07,
                          saturation=1.1, contrast=-0.1)),
    # Alien: a green world, hard and a little hue-shifted.
    ("AlienFilter", dict(gain=(0.85, 1.1, 0.9), hue=25.0, contrast=0.35, saturation=1.2,
                         shadow=(0.0, 0.05, 0.02))),
    # Black-and-white television: cool grey, soft, dark corners.
    ("BlackWhiteTVFilter", dict(mono=(0.95, 1.0, 1.08, 1.0), contrast=0.15, fade=0.05, vignette=0.45)),
    # Blue cloudy day: cool, muted, blue in the shadows.
    ("BlueCloudyFilter", dict(gain=(0.92, 0.98, 1.1), lift=(0.0, 0.02, 0.08), saturation=0.8)),
    # Bold red and blue: punchy colour, deep contrast.
    ("CaptainAmericaFilter", dict(saturation=1.3, contrast=0.35, shadow=(-0.04, 0.0, 0.12),
                                  highlight=(0.1, 0.0, -0.05))),
    # Glossy shop window: bright, clean, pink highlights.
    ("CelebrityShopFilter", dict(gain=(1.1, 1.06, 1.06), gamma=(1.1, 1.05, 1.05),
                                 highlight=(0.05, 0.0, 0.04), saturation=1.08)),
    # Cherry: red and pink, lively.
    ("CherryFilter", dict(gain=(1.12, 0.95, 1.0), highlight=(0.06, -0.02, 0.04), saturation=1.2)),
    # Classic overexposure: blown light, warm, a touch of matte.
    ("ClassicalExposureFilter", dict(gain=(1.25, 1.2, 1.1), gamma=(1.2, 1.2, 1.15), fade=0.04,
                                     saturation=0.9)),
    # Classic soft: low contrast, creamy, gently warm.
    ("ClassicalSoftFilter", dict(contrast=-0.3, fade=0.08, gain=(1.04, 1.0, 0.95), saturation=0.88)),
    # Cold blooded: steel blue, drained, hard.
    ("ColdBloodedFilter", dict(gain=(0.85, 0.95, 1.12), saturation=0.6, contrast=0.25,
                               shadow=(0.0, 0.03, 0.06))),
    # Cold polar: icy cyan highlights, bright and thin.
    ("ColdPolarFilter", dict(gain=(0.95, 1.05, 1.15), gamma=(1.1, 1.15, 1.2), highlight=(-0.04, 0.04, 0.08),
                             saturation=0.75)),
    # Desperately: bleak and grey-green, dark corners.
    ("DesperatelyFilter", dict(saturation=0.4, contrast=0.25, gain=(0.95, 1.0, 0.93), vignette=0.3,
                               shadow=(0.0, 0.03, 0.01))),
    # Diving: under water, red is gone, cyan cast.
    ("DivingFilter", dict(gain=(0.7, 1.02, 1.1), lift=(0.0, 0.05, 0.08), saturation=1.1)),
    # Elder sister: mature warm brown, muted.
    ("ElderSisterFilter", dict(gain=(1.05, 0.98, 0.9), saturation=0.8, contrast=0.1,
                               highlight=(0.04, 0.02, -0.02))),
    # Elegant seaside: airy, cyan shadows, warm light.
    ("ElegantSeasideFilter", dict(gamma=(1.1, 1.12, 1.12), shadow=(-0.03, 0.03, 0.05),
                                  highlight=(0.05, 0.03, 0.0), fade=0.04, saturation=0.9)),
    # Muscle: gritty bronze with hard contrast.
    ("ElementMuscleFilter", dict(contrast=0.45, saturation=0.55, gain=(1.08, 1.0, 0.85))),
    # Evening: orange sun, purple shadows.
    ("EveningFilter", dict(gain=(1.12, 0.98, 0.85), shadow=(0.04, -0.02, 0.07), contrast=0.15)),
    # Godfather: dark sepia, deep corners.
    ("GodFatherFilter", dict(gain=(1.0, 0.88, 0.7), gamma=(0.9, 0.88, 0.85), saturation=0.6,
                             contrast=0.3, vignette=0.55)),
    # Grey fog and haze: lifted, flat, cool grey.
    ("GrayFogHazeFilter", dict(fade=0.16, contrast=-0.35, saturation=0.55, gain=(0.95, 0.98, 1.02))),
    # Green light: green highlights.
    ("GreenLightFilter", dict(highlight=(-0.02, 0.08, 0.0), gain=(0.97, 1.06, 0.96), saturation=1.05)),
    # Happy together: warm and saturated, lightly matte.
    ("HappyTogetherFilter", dict(saturation=1.3, gain=(1.08, 1.03, 0.93), fade=0.03)),
    # Hard muscles: hard contrast, cool shadows, warm light.
    ("HardMusclesFilter", dict(contrast=0.55, saturation=0.5, shadow=(-0.02, 0.0, 0.06),
                               highlight=(0.06, 0.03, -0.02))),
    # Wizarding: teal-grey, drained, dark.
    ("HarryPotterFilter", dict(saturation=0.5, gain=(0.88, 0.98, 1.02), gamma=(0.85, 0.9, 0.92),
                               vignette=0.35, shadow=(0.0, 0.03, 0.04))),
    # Hawaii: tropical colour, warm light, cyan shade.
    ("HawaiiFilter", dict(saturation=1.35, hue=-8.0, gain=(1.06, 1.02, 0.95), shadow=(-0.02, 0.03, 0.04))),
    # Hot sun chasing: strong orange-yellow.
    ("HotSunChasingFilter", dict(gain=(1.15, 1.04, 0.8), contrast=0.15, saturation=1.1)),
    # Social-network wind: matte, teal shade, warm light.
    ("InsWindFilter", dict(fade=0.07, shadow=(-0.02, 0.03, 0.05), highlight=(0.05, 0.02, -0.02),
                           saturation=0.95)),
    # Japanese girl: bright airy pastel with cyan.
    ("JapaneseGirlFilter", dict(gamma=(1.15, 1.2, 1.22), gain=(1.02, 1.05, 1.06), saturation=0.8, fade=0.06)),
    # Love letter: soft pink warmth.
    ("LoveLetterFilter", dict(highlight=(0.06, 0.0, 0.03), fade=0.05, saturation=0.9,
                              gain=(1.05, 0.99, 1.0))),
    # Love notes: rosy red and magenta split.
    ("LoveNotesFilter", dict(shadow=(0.05, -0.02, 0.04), highlight=(0.05, 0.0, 0.02), contrast=0.05,
                             saturation=1.1)),
    # Desert road: orange highlights, teal shadows, blockbuster contrast.
    ("MadMaxFilter", dict(highlight=(0.1, 0.03, -0.06), shadow=(-0.04, 0.04, 0.07), contrast=0.4,
                          saturation=1.2)),
    # Medium: gentle enhancement.
    ("MediumFilter", dict(contrast=0.3, saturation=1.1, gain=(1.04, 1.0, 0.95), fade=0.02)),
    # Nara: deer-park greens and browns.
    ("NaraFilter", dict(gain=(1.02, 1.04, 0.88), saturation=0.9, highlight=(0.02, 0.04, -0.02))),
    # Natural: vivid but true.
    ("NaturalFilter", dict(saturation=1.2, gamma=(1.0, 1.05, 1.0), gain=(0.98, 1.04, 1.0))),
    # Old house: half-toned sepia, matte, dark corners.
    ("OldHouseFilter", dict(mono=(1.12, 0.98, 0.78, 0.55), fade=0.1, vignette=0.4)),
    # Orange desert: sand and heat.
    ("OrangeDesertFilter", dict(gain=(1.14, 0.98, 0.78), saturation=1.1, hue=5.0)),
    # Pop colour: loud and hard.
    ("PoColorFilter", dict(saturation=1.6, contrast=0.25)),
    # Harbour wind: cool teal, matte.
    ("PortWindFilter", dict(gain=(0.92, 1.02, 1.04), saturation=0.8, fade=0.05, shadow=(-0.02, 0.02, 0.03))),
    # Purple glow.
    ("PurpleXiaFilter", dict(gain=(1.04, 0.9, 1.1), fade=0.05, saturation=0.9, highlight=(0.04, -0.02, 0.06))),
    # Remembering: deep, warm, faded.
    ("RememberDeepenFilter", dict(gamma=(0.85, 0.83, 0.8), gain=(1.05, 1.0, 0.92), saturation=0.78,
                                  vignette=0.3)),
    # Rural mountain: rich greens.
    ("RuralMountainFilter", dict(gain=(1.0, 1.08, 0.94), saturation=1.18, highlight=(0.03, 0.02, -0.03))),
    # Silent hill: drained fog with a sick green.
    ("SilentHillFilter", dict(saturation=0.22, fade=0.18, contrast=-0.2, gain=(0.95, 1.0, 0.93))),
    # Snow-country train: bright, cold, colourless.
    ("SnowCountryTrainFilter", dict(gain=(1.05, 1.1, 1.2), gamma=(1.15, 1.15, 1.2), saturation=0.55)),
    # War film: khaki, hard, dark corners.
    ("SoldiersOfSnatchFilter", dict(saturation=0.35, contrast=0.35, gain=(1.02, 1.0, 0.82), vignette=0.4)),
    # To youth: fresh green-cyan shade, warm light, bright.
    ("ToYouthFilter", dict(gamma=(1.08, 1.1, 1.06), shadow=(-0.02, 0.04, 0.03), highlight=(0.04, 0.02, 0.0),
                           fade=0.04, saturation=1.05)),
    # Twilight: blue-violet dusk.
    ("TwiLightFilter", dict(gain=(0.92, 0.9, 1.12), gamma=(0.9, 0.9, 0.95), saturation=0.85,
                            shadow=(0.03, 0.0, 0.07))),
    # Vibrant: colour up.
    ("VibrantFilter", dict(saturation=1.5, gamma=(1.08, 1.08, 1.08))),
    # Vlog: clean, bright, slightly warm.
    ("VlogWindFilter", dict(gamma=(1.12, 1.1, 1.06), fade=0.03, saturation=1.05, contrast=-0.08)),
    # Warm sun: golden light.
    ("WarmSunFilter", dict(gain=(1.1, 1.04, 0.88), highlight=(0.06, 0.04, -0.02))),
    # Yellowed photo album: yellow paper, matte, half toned.
    ("YellowingPhotoAlbumFilter", dict(mono=(1.1, 1.02, 0.72, 0.35), fade=0.1, saturation=0.8,
                                       gain=(1.04, 1.0, 0.86))),
    # Young girl's heart: bright pink pastel.
    ("YoungGirlHeartFilter", dict(gamma=(1.15, 1.08, 1.12), highlight=(0.06, 0.0, 0.04), fade=0.06,
                                  saturation=0.9)),
    # Zombie siege: sick green, hard, dark corners.
    ("ZombieSiegeFilter", dict(saturation=0.5, contrast=0.35, gain=(0.9, 1.06, 0.86), gamma=(0.88, 0.9, 0.88),
                               vignette=0.4)),
    # Instant film: matte, warm light, cyan shade.
    ("PolaroidFilter", dict(fade=0.08, highlight=(0.05, 0.03, -0.02), shadow=(-0.02, 0.02, 0.04),
                            contrast=-0.05, saturation=0.9)),
    # Hong Kong cinema: warm yellow-green, contrasty.
    ("HongKongMovieFilter", dict(gain=(1.06, 1.04, 0.86), saturation=1.12, contrast=0.22, fade=0.03,
                                 shadow=(0.0, 0.03, 0.0))),
    # Winter blues: blue and cold.
    ("WinterBluesFilter", dict(gain=(0.88, 0.96, 1.18), saturation=0.7, lift=(0.0, 0.0, 0.05))),
    # Midnight canteen: amber lamps in the dark.
    ("MidNightCanteenFilter", dict(gain=(1.1, 0.98, 0.8), gamma=(0.85, 0.85, 0.85), contrast=0.25,
                                   saturation=0.9, vignette=0.4)),
    # Nordic simplicity: pale, cool, clean.
    ("NordicSimplicityFilter", dict(saturation=0.62, gamma=(1.1, 1.12, 1.14), fade=0.05, gain=(0.97, 1.0, 1.03))),
    # Japanese photo: low contrast, cyan-green shade, bright.
    ("JapanesePhotoFilter", dict(contrast=-0.15, gamma=(1.12, 1.14, 1.1), shadow=(-0.03, 0.04, 0.03),
                                 saturation=0.85)),
    # Dead autumn leaves: orange-brown, dry.
    ("DeadAutumnLeavesFilter", dict(gain=(1.1, 0.96, 0.8), hue=10.0, saturation=0.9, contrast=0.15,
                                    fade=0.03)),
]

# The 25 clip animations and the define of the animation program that draws
# each: reveals (ufmAnimIsIn 1) and hides (0) over transparency.
ANIMATIONS = [
    ("AnimFadeInOut", "ANIM_FADE"),
    ("AnimTopToDown", "ANIM_SLIDE_DOWN"),
    ("AnimLeftToRight", "ANIM_SLIDE_RIGHT"),
    ("AnimTopDownWipe", "ANIM_WIPE_DOWN"),
    ("AnimLeftRightWipe", "ANIM_WIPE_RIGHT"),
    ("AnimCircleScale", "ANIM_CIRCLE"),
    ("AnimRectangleZoom", "ANIM_RECTANGLE"),
    ("AnimRotateScale", "ANIM_ROTATE_SCALE"),
    ("AnimBevelLeftDown", "ANIM_BEVEL_LEFT_DOWN"),
    ("AnimBevelRightDown", "ANIM_BEVEL_RIGHT_DOWN"),
    ("AnimLeftRight", "ANIM_BARN_DOOR"),
    ("AnimZoomInOut", "ANIM_ZOOM_FADE"),
    ("AnimClock", "ANIM_CLOCK"),
    ("AnimSimpleZoom", "ANIM_GROW"),
    ("AnimLinearBlur", "ANIM_LINEAR_BLUR"),
    ("AnimGlitchMemories", "ANIM_GLITCH"),
    ("AnimHexagonalize", "ANIM_HEXAGONS"),
    ("AnimInvertedPageCurl", "ANIM_PAGE_CURL"),
    ("AnimGridFlip", "ANIM_GRID_FLIP"),
    ("AnimCube", "ANIM_CUBE"),
    ("AnimDoorway", "ANIM_DOORWAY"),
    ("AnimSqueeze", "ANIM_SQUEEZE"),
    ("AnimSwap", "ANIM_SWAP"),
    ("AnimSwirl", "ANIM_SWIRL"),
    ("AnimCrossZoom", "ANIM_CROSS_ZOOM"),
]

SHAKE = [("ufmVideoTime", 0.0, "playtime", "live")]


def shake(hz, x, y, z):
    return SHAKE + [("ufmShakeHz", hz), ("ufmShakeSizeX", x), ("ufmShakeSizeY", y), ("ufmShakeSizeZ", z),
                    ("ufmIsBlur", 1.0), ("ufmIsRgb", 1.0)]


MASK_COMMON = [("ufmSmoothDiff", 0.0), ("ufmInvert", 0.0), ("ufmOrient", 0.0), ("ufmAspect", 0.0, "computed", "live")]

# Each filter: name, family, program source, preprocessor define (or None),
# uniforms, and keyword extras:
#   init      the constructor writes the defaults as properties (default True)
#   frame     per-frame values: progress, fade, old_tv, old_movie, animation
#   special   filter-specific code path: sample_span, reset_edge_strength, lut,
#             mask_liner, mask_double_liner, mask_circle, mask_rectangle,
#             mask_heart, mask_star
#   extra     uniforms that the program declares and only the processor
#             sends (besides those of `frame`)
#   consts    named constants of the material, given to the program
FILTERS = [
    ("BlurFilter", "blur", "blur_fp.glsl", "REGION_BLUR",
     [("ufmBlurSize", 0.5), ("ufmRectPosX", 0.25), ("ufmRectPosY", 0.25), ("ufmRectWidth", 0.5),
      ("ufmRectHeight", 0.5), ("ufmImageW", 0.0, "render_width"), ("ufmImageH", 0.0, "render_height")],
     dict(special="sample_span", extra=["ufmUpdateDefault"])),
    ("MosaicFilter", "blur", "blur_fp.glsl", "MOSAIC",
     [("ufmPixelSize", 0.05), ("ufmRectPosX", 0.25), ("ufmRectPosY", 0.25), ("ufmRectWidth", 0.5),
      ("ufmRectHeight", 0.5), ("ufmImageWidth", 0.0, "render_width"), ("ufmImageHeight", 0.0, "render_height"),
      ("ufmImageWidthFactor", 0.5), ("ufmImageHeightFactor", 0.5)],
     dict(special="sample_span", extra=["ufmUpdateDefault"])),
    ("OldTVFilter", "motion", "retro_fp.glsl", "OLD_TV",
     [("ufmInterference", 0.2), ("ufmDistortionScale", 0.0)],
     dict(frame="old_tv")),
    ("OldMovieFilter", "motion", "retro_fp.glsl", "OLD_MOVIE",
     [("ufmLight", 1.0), ("ufmScratchNum", 1.0)],
     dict(frame="old_movie")),
    ("VignetteFilter", "stylize", "tone_fp.glsl", "VIGNETTE",
     [("ufmAlpha", 1.0), ("ufmRadius", 0.5), ("ufmEclosion", 0.2), ("ufmImageW", 0.0, "render_width"),
      ("ufmImageH", 0.0, "render_height")], {}),
    ("ShowMachineFilter", "motion", "retro_fp.glsl", "SHOW_MACHINE",
     [("ufmBrightness", 0.2), ("ufmVideoTime", 0.0, "playtime")],
     dict(frame="progress")),
    ("GlowFilter", "blur", "blur_fp.glsl", "GLOW",
     [("ufmBrightness", 0.3), ("ufmBlurSize", 0.05)], {}),
    ("SharpenFilter", "blur", "blur_fp.glsl", "SHARPEN",
     [("ufmSharpnessStrength", 0.2)], {}),
    ("CartoonFilter", "stylize", "edges_fp.glsl", "CARTOON",
     [("ufmThreshold", 0.2), ("ufmQuantizationLevels", 10.0)], {}),
    ("ColorLevelFilter", "adjust", "adjust_fp.glsl", "LEVELS",
     [("ufmLevelMinimum", 0.0, "init=0.2"), ("ufmLevelMiddle", 0.5), ("ufmLevelMaximum", 1.0),
      ("ufmMinOutput", 0.0), ("ufmMaxOutput", 1.0)], {}),
    ("ExposureFilter", "adjust", "adjust_fp.glsl", "EXPOSURE",
     [("ufmExposure", 0.5)], {}),
    ("FishEyeFilter", "distort", "distort_fp.glsl", "FISH_EYE",
     [("ufmImageWidth", 0.0, "render_width"), ("ufmImageHeight", 0.0, "render_height"), ("ufmFishEyeWidth", 1.0),
      ("ufmFishEyeHeight", 1.0), ("ufmFishEyePosX", 0.0), ("ufmFishEyePosY", 0.0), ("ufmPushOutSize", 1.0)], {}),
    ("FlashWhiteFliter", "motion", "motion_fp.glsl", "FLASH",
     [("ufmStrength", 50.0)],
     dict(frame="progress")),
    ("ShakeOneFilter", "motion", "motion_fp.glsl", "SHAKE", shake(50.0, 0.3, 0.3, 0.3), dict(frame="progress")),
    ("ShakeTwoFilter", "motion", "motion_fp.glsl", "SHAKE", shake(41.0, 0.15, 0.15, 0.15), dict(frame="progress")),
    ("ShakeThreeFilter", "motion", "motion_fp.glsl", "SHAKE", shake(50.0, 0.02, 0.02, 0.02), dict(frame="progress")),
    ("ShakeFourFilter", "motion", "motion_fp.glsl", "SHAKE", shake(33.0, 0.08, 0.04, 0.3), dict(frame="progress")),
    ("ShakeFiveFilter", "motion", "motion_fp.glsl", "SHAKE", shake(100.0, 0.5, 0.05, 0.3), dict(frame="progress")),
    ("ShakeSixFilter", "motion", "motion_fp.glsl", "SHAKE", shake(100.0, 0.2, 0.02, 0.0), dict(frame="progress")),
    ("GammaGrayFilter", "adjust", "adjust_fp.glsl", "GAMMA_GRAY",
     [("ufmGamma", 1.5)], {}),
    ("GlassRefractionFilter", "distort", "distort_fp.glsl", "GLASS",
     [("ufmRadius", 0.25), ("ufmAspectRatio", 1.0), ("ufmRefractiveIndex", 0.71)], {}),
    ("HomochromyFilter", "adjust", "adjust_fp.glsl", "HOMOCHROMY",
     [("ufmIntensity", 1.0)], {}),
    ("LightMixFilter", "stylize", "tone_fp.glsl", "LIGHT_MIX",
     [("ufmFirstColorR", 255.0, "colour=ufmFirstColor/r"), ("ufmFirstColorG", 255.0, "colour=ufmFirstColor/g"),
      ("ufmFirstColorB", 255.0, "colour=ufmFirstColor/b"), ("ufmFirstColorA", 255.0, "colour=ufmFirstColor/a"),
      ("ufmSecondColorR", 0.0, "colour=ufmSecondColor/r"), ("ufmSecondColorG", 0.0, "colour=ufmSecondColor/g"),
      ("ufmSecondColorB", 0.0, "colour=ufmSecondColor/b"), ("ufmSecondColorA", 255.0, "colour=ufmSecondColor/a")],
     dict(init=False)),
    ("LightWhiteBlackFilter", "stylize", "tone_fp.glsl", "LIGHT_WHITE_BLACK",
     [("ufmThreshold", 0.5)], {}),
    ("PaintingFilter", "stylize", "painting_fp.glsl", None,
     [("ufmRadius", 10.0)], {}),
    ("PrewittEdgeFilter", "stylize", "edges_fp.glsl", "PREWITT",
     [("ufmEdgeStrength", 10.0)],
     dict(special="reset_edge_strength")),
    ("RgbFilter", "adjust", "adjust_fp.glsl", "RGB",
     [("ufmRedAdjustment", 1.0), ("ufmGreenAdjustment", 1.0), ("ufmBlueAdjustment", 1.0)], {}),
    ("SaturationFilter", "adjust", "adjust_fp.glsl", "SATURATION",
     [("ufmSaturation", 1.0)], {}),
    ("ShadowsHgihlightsFilter", "adjust", "adjust_fp.glsl", "SHADOWS_HIGHLIGHTS",
     [("ufmShadows", 0.0), ("ufmHighlights", 1.0)], {}),
    ("ShapeChangeFilter", "distort", "distort_fp.glsl", "SHAPE",
     [("ufmAspectRatio", 1.0), ("ufmRadius", 1.0), ("ufmScale", 1.0)], {}),
    ("SketchFilter", "stylize", "edges_fp.glsl", "SKETCH",
     [("ufmEdgeStrength", 1.0)],
     dict(special="reset_edge_strength")),
    ("SobelEdgeFilter", "stylize", "edges_fp.glsl", "SOBEL",
     [("ufmEdgeStrength", 1.0)], {}),
    ("ThresholdEdgeFilter", "stylize", "edges_fp.glsl", "THRESHOLD_EDGE",
     [("ufmThreshold", 0.2), ("ufmEdgeStrength", 1.0)], {}),
    ("WhirlpoolFilter", "distort", "distort_fp.glsl", "WHIRLPOOL",
     [("ufmRadius", 0.5), ("ufmAngle", 1.0)], {}),
    ("WhiteBlanceFilter", "adjust", "adjust_fp.glsl", "WHITE_BALANCE",
     [("ufmTemperature", 5000.0), ("ufmTint", 0.0)], {}),
    ("FadeInOutFilter", "motion", "motion_fp.glsl", "FADE",
     [("ufmPlaytime", 0.0, "sent_playtime"), ("ufmFPS", 0.0, "sent_fps"), ("ufmVideoIn", 1.0), ("ufmVideoOut", 1.0),
      ("ufmVideoInTime", 2.0), ("ufmVideoOutTime", 1.0)],
     dict(frame="fade")),
    ("BrightnessFilter", "adjust", "adjust_fp.glsl", "BRIGHTNESS",
     [("ufmBrightness", 0.0), ("ufmAlpha", 1.0)], {}),
    ("ContrastFilter", "adjust", "adjust_fp.glsl", "CONTRAST",
     [("ufmContrast", 1.0)], {}),
    ("GreenCutOutFilter", "stylize", "tone_fp.glsl", "COLOUR_KEY",
     [("ufmColorR", 0.0, "colour=ufmColor/r", "key=ufmColor"), ("ufmColorG", 0.0, "colour=ufmColor/g", "key=ufmColor"),
      ("ufmColorB", 0.0, "colour=ufmColor/b", "key=ufmColor"), ("ufmTypeChose", 0.0), ("ufmDiffX", 0.2),
      ("ufmDiffY", 0.2), ("ufmDiffZ", 0.2)], {}),
    ("HueAdjustFilter", "adjust", "adjust_fp.glsl", "HUE",
     [("ufmHueI", 0.48), ("ufmHueQ", -0.38), ("ufmStrength", 1.0)], {}),
    # The colour looks stand here, in LOOKS order.
    ("ZoomRestoreFilter", "distort", "distort_fp.glsl", "ZOOM_RESTORE",
     [("ufmStart", 0.0), ("ufmEnd", 1.0), ("ufmZoomX", 0.0), ("ufmZoomY", 0.0), ("ufmZoomWidth", 1.0),
      ("ufmZoomHeight", 1.0)],
     dict(init=False, frame="progress")),
    ("ImageColorFixFilter", "adjust", "adjust_fp.glsl", "COLOR_FIX",
     [("ufmBrightness", 0.0), ("ufmContrast", 1.0), ("ufmHighlights", 1.0), ("ufmShadows", 0.0), ("ufmExposure", 0.0),
      ("ufmSharpnessStrength", 0.0), ("ufmTemperature", 5000.0), ("ufmTint", 0.0), ("ufmSaturation", 1.0)],
     dict(init=False)),
    # The clip animations stand here, in ANIMATIONS order.
    ("GaussianBlur", "blur", "blur_fp.glsl", "GAUSSIAN",
     [("ufmImageW", 0.0, "sent_width"), ("ufmImageH", 0.0, "sent_height")],
     dict(init=False, passes=("GAUSSIAN_PASS_X", "GAUSSIAN_PASS_Y"))),
    ("GaussianBlurX", "blur", "blur_fp.glsl", "GAUSSIAN_X",
     [("ufmImageW", 0.0, "sent_width"), ("ufmImageH", 0.0, "sent_height")], dict(init=False)),
    ("GaussianBlurY", "blur", "blur_fp.glsl", "GAUSSIAN_Y",
     [("ufmImageW", 0.0, "sent_width"), ("ufmImageH", 0.0, "sent_height")], dict(init=False)),
    ("ApplyDynamicLutFilter", "lut", "lut_fp.glsl", None,
     [("ufmMVNLutPath", 0.0, "property_only", "live"), ("ufmIntensity", 1.0, "computed", "live"),
      ("ufmlutPathError", 1.0, "computed", "dead"), ("ufmWidth", 0.0, "computed", "dead"),
      ("ufmHeight", 0.0, "computed", "dead")],
     dict(init=False, special="lut", sampler_lut=True)),
    ("MaskLinerFilter", "mask", "mask_fp.glsl", "MASK_LINE",
     MASK_COMMON + [("ufmPositionX", 0.0), ("ufmPositionY", 0.0)],
     dict(init=False, special="mask_liner")),
    ("MaskDoubleLinerFilter", "mask", "mask_fp.glsl", "MASK_DOUBLE_LINE",
     MASK_COMMON + [("ufmPositionX", 0.0), ("ufmPositionY", 0.0), ("ufmLineWidth", 0.5)],
     dict(init=False, special="mask_double_liner")),
    ("MaskCircleFilter", "mask", "mask_fp.glsl", "MASK_CIRCLE",
     MASK_COMMON + [("ufmPositionX", 0.0), ("ufmPositionY", 0.0), ("ufmCircleSizeX", 0.5), ("ufmCircleSizeY", 0.5)],
     dict(init=False, special="mask_circle")),
    ("MaskRectangleFilter", "mask", "mask_fp.glsl", "MASK_RECTANGLE",
     MASK_COMMON + [("ufmPositionX", 0.5), ("ufmPositionY", 0.5), ("ufmRectangleSizeX", 0.25),
                    ("ufmRectangleSizeY", 0.25), ("ufmCircleRadius", 0.0, "computed", "live")],
     dict(init=False, special="mask_rectangle")),
    ("MaskHeartFilter", "mask", "mask_fp.glsl", "MASK_HEART",
     MASK_COMMON + [("ufmPositionX", 0.0), ("ufmPositionY", 0.0), ("ufmHeartSize", 0.0, "property_only", "live"),
                    ("ufmHeartSizeX", 0.0, "computed"), ("ufmHeartSizeY", 0.0, "computed")],
     dict(init=False, special="mask_heart")),
    ("MaskStarShapeFilter", "mask", "mask_fp.glsl", "MASK_STAR",
     MASK_COMMON + [("ufmPositionX", 0.0), ("ufmPositionY", 0.0), ("ufmStarSize", 0.0, "property_only", "live"),
                    ("ufmStarSizeX", 0.0, "computed"), ("ufmStarSizeY", 0.0, "computed")],
     dict(init=False, special="mask_star")),
]

# Uniforms that each kind of per-frame step sends.
FRAME_UNIFORMS = {
    None: [],
    "progress": ["ufmProgress"],
    "fade": ["ufmProgress"],
    "old_tv": ["ufmTime_0_X", "ufmSin_time_0_X"],
    "old_movie": ["ufmTimeScratchLight", "ufmTime"],
    "animation": ["ufmProgress", "ufmKeepDefault"],
}


def keeps_alpha(family, define):
    """Whether a filter hands on its input's alpha unchanged, whatever its
    uniforms: then an opaque picture stays opaque and is drawn without
    blending. The colour looks, the 3D LUT and the adjustments but brightness
    (whose ufmAlpha fades the picture) do."""
    return family in ("look", "lut") or (family == "adjust" and define != "BRIGHTNESS")


def catalogue():
    """Every filter in catalogue order as a dict with the keys name, family,
    program, define, uniforms, init, frame, special, extra, consts,
    sampler_lut, keeps_alpha and passes."""
    rows = []

    def add(name, family, program, define, uniforms, extras):
        row = dict(name=name, family=family, program=program, define=define, uniforms=uniforms,
                   init=extras.get("init", True), frame=extras.get("frame"), special=extras.get("special"),
                   extra=extras.get("extra", []), consts=extras.get("consts", {}),
                   sampler_lut=extras.get("sampler_lut", False), keeps_alpha=keeps_alpha(family, define),
                   passes=extras.get("passes"))
        rows.append(row)

    for name, family, program, define, uniforms, extras in FILTERS:
        add(name, family, program, define, uniforms, extras)
        if name == "HueAdjustFilter":
            for look, settings in LOOKS:
                consts = dict(LOOK_NEUTRAL)
                consts.update(settings)
                add(look, "look", "look_fp.glsl", None, [("ufmIntensity", 1.0)], dict(consts=consts))
        if name == "ImageColorFixFilter":
            for anim, define in ANIMATIONS:
                add(anim, "animation", "anim_fp.glsl", define, [("ufmUseEffect", 0.0), ("ufmAnimIsIn", 0.0)],
                    dict(init=False, frame="animation"))
    return rows
